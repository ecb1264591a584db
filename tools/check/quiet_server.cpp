// QuietServer: the copy, the silenced console and the stand-in's life.
#include "quiet_server.h"

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "tier0.h"
#include "vstdlib.h"

extern "C" void* CreateInterface(const char* name, int* returnCode);

namespace fs = std::filesystem;

namespace {

std::string* s_sink = nullptr;

void Collect(SpewType_t, const char* text) {
  if (s_sink) *s_sink += text;
}

// While it lives, the console's output and whatever is written to file descriptors 1 and 2 go to `sink`.
class Aside {
public:
  explicit Aside(std::string& sink) : m_sink(sink), m_previous(SpewOutputFunc(&Collect)) {
    s_sink = &sink;
    fflush(stdout);
    fflush(stderr);
    m_file = tmpfile();
    if (!m_file) return;
    m_out = dup(1);
    m_err = dup(2);
    dup2(fileno(m_file), 1);
    dup2(fileno(m_file), 2);
  }
  ~Aside() {
    SpewOutputFunc(m_previous);
    s_sink = nullptr;
    if (!m_file) return;
    fflush(stdout);
    fflush(stderr);
    dup2(m_out, 1);
    dup2(m_err, 2);
    close(m_out);
    close(m_err);
    rewind(m_file);
    char buffer[4096];
    for (size_t n; (n = fread(buffer, 1, sizeof buffer, m_file)) > 0;) m_sink.append(buffer, n);
    fclose(m_file);
  }
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;

private:
  std::string& m_sink;
  SpewOutputFunc_t m_previous;
  FILE* m_file = nullptr;
  int m_out = -1, m_err = -1;
};

// Copies a file or folder when it exists; a link is copied as what it points at.
void CopyIfPresent(const fs::path& from, const fs::path& to) {
  std::error_code ec;
  if (!fs::exists(from, ec)) return;
  fs::create_directories(to.parent_path(), ec);
  fs::copy(from, to, fs::copy_options::recursive | fs::copy_options::overwrite_existing, ec);
}

std::string MakeTempRoot() {
  const char* tmp = getenv("TMPDIR");
  std::string pattern = std::string(tmp && tmp[0] ? tmp : "/tmp") + "/tw-check-XXXXXX";
  return mkdtemp(pattern.data()) ? pattern : std::string();
}

}  // namespace

QuietServer::QuietServer(const std::string& gameDir, bool withPlugin, Copy what,
                         const std::vector<std::string>& extraFiles) {
  std::error_code ec;
  const fs::path game = fs::canonical(gameDir, ec);
  if (ec || !fs::is_directory(game)) {
    m_output = "no game directory at " + gameDir + "\n";
    return;
  }
  m_root = MakeTempRoot();
  if (m_root.empty()) {
    m_output = "can't make a temporary folder\n";
    return;
  }
  const fs::path copy = fs::path(m_root) / "game";
  fs::create_directories(copy, ec);
  CopyIfPresent(game.parent_path() / "hl2" / "resource", fs::path(m_root) / "hl2" / "resource");
  for (const char* part : {"resource", "Resource"}) CopyIfPresent(game / part, copy / part);
  if (what == Copy::StartUp) {
    for (const char* part : {"cfg", "addons"}) CopyIfPresent(game / part, copy / part);
  } else {
    for (const auto& entry : fs::directory_iterator(game / "addons", ec))
      if (entry.path().extension() == ".res") CopyIfPresent(entry.path(), copy / "addons" / entry.path().filename());
    CopyIfPresent(game / "addons/tidewright/_libs", copy / "addons/tidewright/_libs");
  }
  for (const std::string& file : extraFiles) CopyIfPresent(game / file, copy / file);

  Aside aside(m_output);
  std::string argv0 = "tidewright-check", gameFlag = "--game", gamePath = copy.string();
  char* argv[] = {argv0.data(), gameFlag.data(), gamePath.data()};
  CommandLine()->CreateCmdLine(3, argv);
  StandInConfig config;
  config.gameDir = gamePath;
  m_server = std::make_unique<CStandIn>(config);
  m_server->Start(withPlugin ? &CreateInterface : nullptr, "tidewright");
  m_started = !withPlugin || m_server->Plugin() != nullptr;
}

QuietServer::~QuietServer() {
  {
    std::string ignored;
    Aside aside(ignored);
    m_server.reset();
  }
  std::error_code ec;
  if (!m_root.empty()) fs::remove_all(m_root, ec);
}
