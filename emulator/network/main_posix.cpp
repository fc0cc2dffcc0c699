#include <atomic>
#include <csignal>
#include <string>
#include <vector>

#include "emulator/network/network_program.h"

namespace {

std::atomic<bool> stop_requested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "set in a signal handler");

void RequestStop(int) {
  stop_requested = true;
}

}  // namespace

int main(int argc, char** argv) {
  std::signal(SIGINT, RequestStop);
  std::signal(SIGTERM, RequestStop);
  return lxemu::RunNetworkProgram(std::vector<std::string>(argv + 1, argv + argc), stop_requested);
}
