// The fixture of the messaging tests: the world access fixture (the shared stand-in with the real plugin,
// emptied of players around every test) with a tap on the stand-in's user messages, so that a test reads
// each message's id, recipients and payload bytes as the engine delivered them.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "../worldaccess/worldaccess_fixture.h"

class MessagingTest : public WorldAccessTest {
protected:
  void SetUp() override {
    WorldAccessTest::SetUp();
    sent.clear();
    SimWorld().SetUserMessageTap([this](const SentUserMessage& m) { sent.push_back(m); });
  }
  void TearDown() override {
    SimWorld().SetUserMessageTap(nullptr);
    Set("tidewright_maxmsg", "28");
    WorldAccessTest::TearDown();
  }

  // Bytes as "03 68 69".
  static std::string Hex(const std::vector<unsigned char>& bytes) {
    std::string text;
    char byte[4];
    for (unsigned char b : bytes) {
      snprintf(byte, sizeof byte, text.empty() ? "%02X" : " %02X", b);
      text += byte;
    }
    return text;
  }
  // Userids as "2,3".
  static std::string Userids(const SentUserMessage& m) {
    std::string text;
    for (int userid : m.userids) text += (text.empty() ? "" : ",") + std::to_string(userid);
    return text;
  }
  // The messages sent since the last call, and forgets them.
  std::vector<SentUserMessage> Take() {
    std::vector<SentUserMessage> taken;
    taken.swap(sent);
    return taken;
  }

  std::vector<SentUserMessage> sent;
};
