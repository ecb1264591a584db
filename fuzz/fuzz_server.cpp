// The fuzz targets' stand-in server: see fuzz_server.h.
#include "fuzz_server.h"

#include <signal.h>
#include <sys/time.h>

#include <cstdio>
#include <cstdlib>

#include "convar.h"
#include "host/console.h"
#include "output_capture.h"
#include "standin.h"

namespace {

void Interrupt(int) { CStandIn::RequestInterrupt(); }

void ArmBudget(long milliseconds) {
  itimerval timer{};
  timer.it_value.tv_sec = milliseconds / 1000;
  timer.it_value.tv_usec = (milliseconds % 1000) * 1000;
  setitimer(ITIMER_VIRTUAL, &timer, nullptr);
}

void IgnoreQuit() {}

}  // namespace

TestServer& FuzzServer() {
  static TestServer& server = [&]() -> TestServer& {
    TestServer& shared = TestServer::Shared();
    struct sigaction action{};
    action.sa_handler = &Interrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGVTALRM, &action, nullptr);
    static ConCommand quit("quit", &IgnoreQuit, "Disarmed while fuzzing.", FCVAR_UNREGISTERED);
    if (!quit.IsRegistered()) shared.Server().Console().RegisterConCommandBase(&quit);
    return shared;
  }();
  return server;
}

void FuzzRunLines(const std::string& lines) {
  CStandIn& server = FuzzServer().Server();
  OutputCapture quiet;
  size_t start = 0, count = 0;
  while (start < lines.size() && count++ < FUZZ_MAX_LINES) {
    size_t end = lines.find('\n', start);
    if (end == std::string::npos) end = lines.size();
    std::string line = lines.substr(start, end - start);
    ArmBudget(FUZZ_LINE_BUDGET_MS);
    server.RunLine(line.c_str());
    ArmBudget(0);
    start = end + 1;
  }
  if (!server.Cbuf().IsEmpty()) server.Interrupt();
  if (getenv("TW_FUZZ_ECHO")) fprintf(stderr, "%s", quiet.Text().c_str());
}

void FuzzSetVar(const char* name, const std::string& value) {
  FuzzServer();
  SetVarText(name, value.c_str(), true);
}
