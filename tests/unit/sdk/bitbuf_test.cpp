// The bit buffer of user messages: lowest bit first, little-endian bytes, sticky overflow.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "bitbuf.h"

TEST(BitBuffer, WholeBytesAreLittleEndian) {
  unsigned char data[16] = {};
  bf_write w(data, sizeof data);
  w.WriteByte(0xAB);
  w.WriteShort(-2);
  w.WriteLong(0x01020304);
  w.WriteString("hi");
  w.WriteString(nullptr);  // one zero byte
  EXPECT_FALSE(w.IsOverflowed());
  EXPECT_EQ(w.GetNumBytesWritten(), 11);
  const unsigned char expected[] = {0xAB, 0xFE, 0xFF, 0x04, 0x03, 0x02, 0x01, 'h', 'i', 0, 0};
  EXPECT_EQ(0, memcmp(data, expected, sizeof expected));
}

TEST(BitBuffer, BitsGoInLowestFirst) {
  unsigned char data[4] = {};
  bf_write w(data, sizeof data);
  w.WriteOneBit(1);
  w.WriteUBitLong(0x5, 3);  // bits 1..3 = 1,0,1
  w.WriteByte(0xFF);        // straddles the byte boundary
  EXPECT_EQ(data[0], 0xFB);
  EXPECT_EQ(data[1], 0x0F);
  EXPECT_EQ(w.GetNumBitsWritten(), 12);
}

TEST(BitBuffer, OverflowSetsTheFlagAndWritesNothingMore) {
  unsigned char data[3] = {0, 0, 0x77};
  bf_write w(data, 2);
  w.WriteByte(1);
  w.WriteLong(0x11223344);  // does not fit
  EXPECT_TRUE(w.IsOverflowed());
  EXPECT_EQ(w.GetNumBitsWritten(), 16);
  w.WriteByte(2);
  EXPECT_EQ(data[1], 0);
  EXPECT_EQ(data[2], 0x77);
}

TEST(BitBuffer, ReaderGivesBackWhatTheWriterWrote) {
  unsigned char data[32] = {};
  bf_write w(data, sizeof data);
  w.WriteChar(-5);
  w.WriteOneBit(1);
  w.WriteFloat(1.25f);
  w.WriteSBitLong(-3, 5);
  w.WriteString("menu");
  bf_read r(data, w.GetNumBytesWritten(), w.GetNumBitsWritten());
  EXPECT_EQ(r.ReadChar(), -5);
  EXPECT_EQ(r.ReadOneBit(), 1);
  EXPECT_FLOAT_EQ(r.ReadFloat(), 1.25f);
  EXPECT_EQ(r.ReadSBitLong(5), -3);
  char text[8];
  EXPECT_TRUE(r.ReadString(text, sizeof text));
  EXPECT_STREQ(text, "menu");
  EXPECT_EQ(r.GetNumBitsLeft(), 0);
  r.ReadByte();
  EXPECT_TRUE(r.IsOverflowed());
}

// A byte written one bit at a time: the way every write goes when it doesn't start on a byte boundary.
void BitwiseByte(bf_write& w, int value) {
  for (int i = 0; i < 8; ++i) w.WriteOneBit((value >> i) & 1);
}

// Strings and whole bytes on a byte boundary take a faster way in and out; what they leave must be what
// bit-by-bit writes leave, overflow included, at every length around the end of the buffer.
TEST(BitBuffer, AlignedStringsMatchBitByBitWritesAtTheEdge) {
  const std::string text(12, 's');
  for (size_t length = 0; length <= text.size(); ++length) {
    unsigned char fast[10], slow[10];
    memset(fast, 0xEE, sizeof fast);
    memset(slow, 0xEE, sizeof slow);
    bf_write f(fast, sizeof fast), s(slow, sizeof slow);
    f.WriteShort(0x1234);
    BitwiseByte(s, 0x34), BitwiseByte(s, 0x12);
    f.WriteString(text.substr(0, length).c_str());
    for (size_t i = 0; i < length; ++i) BitwiseByte(s, 's');
    BitwiseByte(s, 0);
    EXPECT_EQ(f.IsOverflowed(), s.IsOverflowed()) << length;
    EXPECT_EQ(f.GetNumBitsWritten(), s.GetNumBitsWritten()) << length;
    EXPECT_EQ(0, memcmp(fast, slow, sizeof fast)) << length;
    EXPECT_EQ(f.IsOverflowed(), length + 1 > 8) << length;
  }
}

TEST(BitBuffer, AlignedReadsStopAtTheZeroByteOrOverflow) {
  const unsigned char data[] = {'a', 'b', 'c', 0, 'd', 'e'};
  char out[8];
  bf_read r(data, sizeof data);
  EXPECT_TRUE(r.ReadString(out, sizeof out));
  EXPECT_STREQ(out, "abc");
  EXPECT_EQ(r.GetNumBitsRead(), 32);
  EXPECT_FALSE(r.ReadString(out, sizeof out));  // no zero byte before the end
  EXPECT_STREQ(out, "de");
  EXPECT_TRUE(r.IsOverflowed());
  bf_read shortOut(data, sizeof data);
  EXPECT_FALSE(shortOut.ReadString(out, 3));  // too long for the buffer: cut, and the read moves past it
  EXPECT_STREQ(out, "ab");
  EXPECT_EQ(shortOut.GetNumBitsRead(), 32);
  EXPECT_FALSE(shortOut.IsOverflowed());
  // One bit in: the same texts, read bit by bit.
  unsigned char shifted[8] = {};
  bf_write w(shifted, sizeof shifted);
  w.WriteOneBit(1);
  w.WriteString("xyz");
  bf_read u(shifted, w.GetNumBytesWritten(), w.GetNumBitsWritten());
  EXPECT_EQ(u.ReadOneBit(), 1);
  EXPECT_TRUE(u.ReadString(out, sizeof out));
  EXPECT_STREQ(out, "xyz");
}
