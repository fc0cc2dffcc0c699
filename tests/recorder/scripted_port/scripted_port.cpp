// A port library whose every answer a test knows: what is sent comes back, and some words do more. It leaves a last
// error behind, as libraries do, and its two unknown entry points have arguments in every place that there is.
#include <windows.h>

#include <cstdint>
#include <mutex>
#include <stdexcept>
#include <string>

#include "scripted_port.h"

namespace {

std::mutex mutex;
std::string waiting;

}  // namespace

extern "C" {

std::int32_t Initialize(const void* description) {
  SetLastError(1001);
  return description == nullptr ? -1003 : *static_cast<const std::int32_t*>(description);
}

std::int32_t Terminate() {
  return 7;
}

std::int32_t SendData(const std::uint8_t* data, std::uint32_t size) {
  SetLastError(1002);
  const std::string sent(reinterpret_cast<const char*>(data), data == nullptr ? 0 : size);
  if (sent == "hang") {
    Sleep(INFINITE);
  }
  if (sent == "throw") {
    throw std::invalid_argument("from the library");
  }
  const std::lock_guard lock(mutex);
  if (sent.starts_with("big ")) {
    waiting.resize(std::stoul(sent.substr(4)));
    for (std::size_t i = 0; i < waiting.size(); ++i) {
      waiting[i] = static_cast<char>(i * 2'654'435'761U >> 13);
    }
  } else {
    waiting = sent;
  }
  return data == nullptr ? -1003 : 0;
}

std::int32_t ReceiveData(std::uint8_t* buffer, std::uint32_t* size) {
  SetLastError(1003);
  if (size == nullptr) {
    return -1003;
  }
  const std::lock_guard lock(mutex);
  if (buffer == nullptr) {
    *size = static_cast<std::uint32_t>(waiting.size());
    return 0;
  }
  *size = static_cast<std::uint32_t>(waiting.copy(reinterpret_cast<char*>(buffer), *size));
  return waiting == "fail" ? -9 : 0;
}

// In xmm0, rdx, xmm2, r9, and on the stack; the other one in rcx (where to), xmm1, r8, xmm3.
double ClearReceiveData(double a, std::int64_t b, float c, const char* d, std::int64_t e, double f,
                        std::int8_t g) {
  SetLastError(1004);
  return a + static_cast<double>(b) * 2 + c * 3 + d[0] * 4 + static_cast<double>(e) * 5 + f * 6 + g * 7;
}

tagManyResults GetPortComIndex(float a, std::int64_t b, double c, std::int32_t* d, tagManyResults e,
                               std::int32_t f) {
  *d += 1;
  return {a + e.a, b + e.b, c + e.c + f};
}

}  // extern "C"
