// Bit buffer writer and reader: lowest bit first, little-endian bytes, overflow flagged and sticky.
#include "bitbuf.h"

#include <cstring>

void bf_write::StartWriting(void* data, int bytes, int startBit) {
  m_pData = static_cast<unsigned char*>(data);
  m_nDataBytes = bytes;
  m_nDataBits = bytes * 8;
  m_iCurBit = startBit;
  m_bOverflow = false;
}

void bf_write::WriteOneBit(int value) {
  if (m_bOverflow || m_iCurBit + 1 > m_nDataBits) {
    m_bOverflow = true;
    m_iCurBit = m_nDataBits;
    return;
  }
  unsigned char mask = static_cast<unsigned char>(1u << (m_iCurBit & 7));
  if (value)
    m_pData[m_iCurBit >> 3] |= mask;
  else
    m_pData[m_iCurBit >> 3] &= static_cast<unsigned char>(~mask);
  ++m_iCurBit;
}

void bf_write::WriteUBitLong(uint32_t value, int numBits) {
  if (m_bOverflow || m_iCurBit + numBits > m_nDataBits) {
    m_bOverflow = true;
    m_iCurBit = m_nDataBits;
    return;
  }
  // Whole bytes on a byte boundary go in as bytes; anything else bit by bit.
  if ((m_iCurBit & 7) == 0 && (numBits & 7) == 0) {
    for (int i = 0; i < numBits; i += 8) m_pData[(m_iCurBit + i) >> 3] = static_cast<unsigned char>(value >> i);
    m_iCurBit += numBits;
    return;
  }
  for (int i = 0; i < numBits; ++i) WriteOneBit(int((value >> i) & 1u));
}

void bf_write::WriteSBitLong(int value, int numBits) {
  uint32_t bits = numBits >= 32 ? uint32_t(value) : (uint32_t(value) & ((1u << numBits) - 1));
  WriteUBitLong(bits, numBits);
}

void bf_write::WriteBits(const void* in, int numBits) {
  if (m_bOverflow || m_iCurBit + numBits > m_nDataBits) {
    m_bOverflow = true;
    m_iCurBit = m_nDataBits;
    return;
  }
  const unsigned char* bytes = static_cast<const unsigned char*>(in);
  if ((m_iCurBit & 7) == 0 && (numBits & 7) == 0) {
    memcpy(m_pData + (m_iCurBit >> 3), bytes, size_t(numBits >> 3));
    m_iCurBit += numBits;
    return;
  }
  for (int i = 0; i < numBits; ++i) WriteOneBit((bytes[i >> 3] >> (i & 7)) & 1);
}

void bf_write::WriteFloat(float value) {
  uint32_t bits;
  memcpy(&bits, &value, sizeof bits);
  WriteUBitLong(bits, 32);
}

void bf_write::WriteString(const char* text) {
  if (!text) text = "";
  if (m_bOverflow || (m_iCurBit & 7) != 0) {
    for (; *text; ++text) WriteByte(static_cast<unsigned char>(*text));
    WriteByte(0);
    return;
  }
  // On a byte boundary: the bytes that fit are copied at once, as the byte-by-byte writes would leave them.
  const size_t length = strlen(text) + 1;
  const size_t room = size_t(m_nDataBits - m_iCurBit) >> 3;
  memcpy(m_pData + (m_iCurBit >> 3), text, length < room ? length : room);
  if (length <= room) {
    m_iCurBit += int(length) * 8;
    return;
  }
  m_bOverflow = true;
  m_iCurBit = m_nDataBits;
}

void bf_read::StartReading(const void* data, int bytes, int bits) {
  m_pData = static_cast<const unsigned char*>(data);
  m_nDataBytes = bytes;
  m_nDataBits = bits < 0 ? bytes * 8 : bits;
  m_iCurBit = 0;
  m_bOverflow = false;
}

int bf_read::ReadOneBit() {
  if (m_bOverflow || m_iCurBit + 1 > m_nDataBits) {
    m_bOverflow = true;
    m_iCurBit = m_nDataBits;
    return 0;
  }
  int bit = (m_pData[m_iCurBit >> 3] >> (m_iCurBit & 7)) & 1;
  ++m_iCurBit;
  return bit;
}

uint32_t bf_read::ReadUBitLong(int numBits) {
  if (m_bOverflow || m_iCurBit + numBits > m_nDataBits) {
    m_bOverflow = true;
    m_iCurBit = m_nDataBits;
    return 0;
  }
  uint32_t value = 0;
  for (int i = 0; i < numBits; ++i) value |= uint32_t(ReadOneBit()) << i;
  return value;
}

int bf_read::ReadSBitLong(int numBits) {
  uint32_t value = ReadUBitLong(numBits);
  if (numBits < 32 && (value & (1u << (numBits - 1)))) value |= ~((1u << numBits) - 1);
  return int(value);
}

float bf_read::ReadFloat() {
  uint32_t bits = ReadUBitLong(32);
  float value;
  memcpy(&value, &bits, sizeof value);
  return value;
}

bool bf_read::ReadString(char* out, int maxLen) {
  if (!m_bOverflow && (m_iCurBit & 7) == 0 && maxLen > 0) {
    // On a byte boundary: find the zero byte among the whole bytes left, then copy what fits.
    const unsigned char* start = m_pData + (m_iCurBit >> 3);
    const size_t left = size_t(m_nDataBits - m_iCurBit) >> 3;
    const void* zero = memchr(start, 0, left);
    const size_t length = zero ? size_t(static_cast<const unsigned char*>(zero) - start) : left;
    const size_t kept = length < size_t(maxLen - 1) ? length : size_t(maxLen - 1);
    memcpy(out, start, kept);
    out[kept] = '\0';
    if (!zero) {
      m_bOverflow = true;
      m_iCurBit = m_nDataBits;
      return false;
    }
    m_iCurBit += int(length + 1) * 8;
    return kept == length;
  }
  int len = 0;
  bool fits = true;
  for (;;) {
    int c = ReadByte();
    if (m_bOverflow || c == 0) break;
    if (len < maxLen - 1)
      out[len++] = char(c);
    else
      fits = false;
  }
  out[len] = '\0';
  return fits && !m_bOverflow;
}
