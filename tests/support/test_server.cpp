// TestServer: a stand-in server on a temporary copy of the demo tree as built, driven in-process.
#include "test_server.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "options.h"
#include "output_capture.h"
#include "vstdlib.h"

extern "C" void* CreateInterface(const char* name, int* returnCode);

namespace fs = std::filesystem;

namespace {

std::string MakeTempRoot() {
  const char* tmp = getenv("TMPDIR");
  std::string pattern = std::string(tmp && tmp[0] ? tmp : "/tmp") + "/tw-test-XXXXXX";
  if (!mkdtemp(pattern.data())) abort();
  return pattern;
}

}  // namespace

void WriteTestFile(const fs::path& path, const std::string& text) {
  fs::create_directories(path.parent_path());
  std::ofstream(path, std::ios::binary) << text;
}

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

TestServer::TestServer() : TestServer(Options{}) {}

TestServer::TestServer(const Options& options) : m_root(MakeTempRoot()) {
  fs::copy(fs::path(TW_DEMO_TREE), m_root, fs::copy_options::recursive);
  for (const auto& [path, content] : options.files) WriteTestFile(fs::path(GameDir()) / path, content);

  std::vector<std::string> words = {"tidewright-server", "--game", GameDir()};
  words.insert(words.end(), options.args.begin(), options.args.end());
  std::vector<char*> argv;
  for (std::string& w : words) argv.push_back(w.data());
  ServerOptions parsed;
  std::string error;
  if (!ParseServerOptions(int(argv.size()), argv.data(), parsed, error)) ADD_FAILURE() << "TestServer: " << error;
  CommandLine()->CreateCmdLine(int(argv.size()), argv.data());

  OutputCapture capture;
  m_server = new CStandIn(parsed.config);
  m_server->Start(options.plugin, "test plugin");
  m_startup = capture.Take();
}

TestServer::~TestServer() {
  {
    OutputCapture quiet;
    delete m_server;
  }
  std::error_code ignored;
  fs::remove_all(m_root, ignored);
}

std::string TestServer::Run(const std::string& lines) {
  OutputCapture capture;
  std::istringstream in(lines);
  std::string line;
  while (std::getline(in, line)) m_server->RunLine(line.c_str());
  return capture.Take();
}

CreateInterfaceFn TestServer::RealPlugin() { return &CreateInterface; }

TestServer& TestServer::Shared() {
  // Never destroyed: the plugin's globals point into it until the process ends. Its folder goes at exit.
  static TestServer* shared = [] {
    Options o;
    o.plugin = RealPlugin();
    return new TestServer(o);
  }();
  static struct Cleanup {
    ~Cleanup() {
      std::error_code ignored;
      fs::remove_all(shared->Root(), ignored);
    }
  } cleanup;
  return *shared;
}
