// The bit buffer of user messages: lowest bit first, little-endian bytes, sticky overflow.
#include <gtest/gtest.h>

#include "bitbuf.h"

TEST(BitBuffer, WholeBytesAreLittleEndian) {
  unsigned char data[16] = {};
  bf_write w(data, sizeof data);
  w.WriteByte(0xAB);
  w.WriteShort(-2);
  w.WriteLong(0x01020304);
  w.WriteString("hi");
  EXPECT_FALSE(w.IsOverflowed());
  EXPECT_EQ(w.GetNumBytesWritten(), 10);
  const unsigned char expected[] = {0xAB, 0xFE, 0xFF, 0x04, 0x03, 0x02, 0x01, 'h', 'i', 0};
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

TEST(BitBuffer, NullStringIsOneZeroByte) {
  unsigned char data[2] = {0xFF, 0xFF};
  bf_write w(data, sizeof data);
  w.WriteString(nullptr);
  EXPECT_EQ(w.GetNumBytesWritten(), 1);
  EXPECT_EQ(data[0], 0);
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
