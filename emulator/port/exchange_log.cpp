#include "emulator/port/exchange_log.h"

#include <iostream>
#include <string>

#include "emulator/printer/text_escape.h"

namespace lxemu {
namespace {

constexpr std::size_t kMaximumShown = 4096;

std::string Describe(std::string_view bytes, std::uint64_t full_size) {
  const std::string_view shown = bytes.substr(0, kMaximumShown);
  return Escaped(shown) + (shown.size() < full_size ? "…" : "") + " (" + std::to_string(full_size) + ")";
}

}  // namespace

CExchangeLog::CExchangeLog(const std::filesystem::path& path) {
  if (!path.empty()) {
    file_.open(path, std::ios::binary | std::ios::app);
    if (!file_.is_open()) {
      const std::u8string shown = path.u8string();
      WriteProblem("the log \"" + std::string(shown.begin(), shown.end()) + "\" cannot be written");
    }
  }
}

void CExchangeLog::WriteNote(std::string_view text) {
  if (file_.is_open()) {
    file_ << "# " << text << '\n' << std::flush;
  }
}

void CExchangeLog::WriteProblem(std::string_view text) {
  WriteNote(text);
  // One piece: other processes write there as well.
  std::cerr << "emulated printer: " + std::string(text) + "\n";
}

void CExchangeLog::WriteExchange(const tagExchange& exchange, std::string_view label) {
  if (file_.is_open()) {
    file_ << label << DescribeExchange(exchange) << '\n' << std::flush;
  }
}

std::string DescribeExchange(const tagExchange& exchange) {
  return Describe(exchange.sent, exchange.sent_bytes) + " -> " +
         Describe(exchange.answer, exchange.answer_bytes);
}

}  // namespace lxemu
