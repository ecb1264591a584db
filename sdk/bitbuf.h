// Bit buffers for user messages. Bits go in lowest first; whole bytes that start on a byte boundary are
// stored as little-endian bytes. A write that doesn't fit sets the overflow flag, moves the current bit to
// the end, and nothing more is written.
#pragma once

#include <cstdint>

class bf_write {
public:
  bf_write() = default;
  bf_write(void* data, int bytes) { StartWriting(data, bytes); }
  void StartWriting(void* data, int bytes, int startBit = 0);
  void Reset() { m_iCurBit = 0; m_bOverflow = false; }

  void WriteOneBit(int value);
  void WriteUBitLong(uint32_t value, int numBits);
  void WriteSBitLong(int value, int numBits);
  void WriteBits(const void* in, int numBits);
  void WriteByte(int value) { WriteUBitLong(uint32_t(value) & 0xFF, 8); }
  void WriteChar(int value) { WriteSBitLong(int(int8_t(value)), 8); }
  void WriteShort(int value) { WriteSBitLong(int(int16_t(value)), 16); }
  void WriteWord(int value) { WriteUBitLong(uint32_t(value) & 0xFFFF, 16); }
  void WriteLong(int32_t value) { WriteSBitLong(value, 32); }
  void WriteFloat(float value);
  void WriteBytes(const void* data, int bytes) { WriteBits(data, bytes * 8); }
  // The text and its closing zero byte; a null text is one zero byte.
  void WriteString(const char* text);

  int GetNumBitsWritten() const { return m_iCurBit; }
  int GetNumBytesWritten() const { return (m_iCurBit + 7) >> 3; }
  int GetMaxNumBits() const { return m_nDataBits; }
  int GetNumBitsLeft() const { return m_nDataBits - m_iCurBit; }
  unsigned char* GetData() const { return m_pData; }
  bool IsOverflowed() const { return m_bOverflow; }
  void SetOverflowFlag() { m_bOverflow = true; }

  // Fields in the layout the engine publishes.
  unsigned char* m_pData = nullptr;
  int m_nDataBytes = 0;
  int m_nDataBits = 0;
  int m_iCurBit = 0;
  bool m_bOverflow = false;
};

// The reading side, used by the engine to decode what it delivers.
class bf_read {
public:
  bf_read() = default;
  bf_read(const void* data, int bytes, int bits = -1) { StartReading(data, bytes, bits); }
  void StartReading(const void* data, int bytes, int bits = -1);

  int ReadOneBit();
  uint32_t ReadUBitLong(int numBits);
  int ReadSBitLong(int numBits);
  int ReadByte() { return int(ReadUBitLong(8)); }
  int ReadChar() { return ReadSBitLong(8); }
  int ReadShort() { return ReadSBitLong(16); }
  int ReadWord() { return int(ReadUBitLong(16)); }
  int32_t ReadLong() { return ReadSBitLong(32); }
  float ReadFloat();
  // Reads up to and including the zero byte; keeps at most maxLen - 1 characters. False on overflow.
  bool ReadString(char* out, int maxLen);

  int GetNumBitsRead() const { return m_iCurBit; }
  int GetNumBitsLeft() const { return m_nDataBits - m_iCurBit; }
  int GetNumBytesLeft() const { return GetNumBitsLeft() >> 3; }
  bool IsOverflowed() const { return m_bOverflow; }

private:
  const unsigned char* m_pData = nullptr;
  int m_nDataBytes = 0;
  int m_nDataBits = 0;
  int m_iCurBit = 0;
  bool m_bOverflow = false;
};
