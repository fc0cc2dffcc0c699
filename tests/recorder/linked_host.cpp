// A host that is linked against the port library: it is loaded before the host's first line.
#include <cstdint>

extern "C" std::int32_t Terminate();

int main() {
  return Terminate();
}
