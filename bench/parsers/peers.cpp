#include "bench/parsers/peers.h"

#include <glib.h>
#include <hs/hs.h>
#include <openssl/evp.h>

#include <stdexcept>

namespace tavira::bench {
namespace {

/** Every character as itself. */
std::string Escaped(std::string_view literal) {
  std::string expression;
  for (const char character : literal) {
    const bool is_letter = (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9');
    expression.append(is_letter ? "" : "\\").push_back(character);
  }
  return expression;
}

}  // namespace

void DecodeWithGlib(std::string_view text, std::string& out) {
  gint state = 0;
  guint save = 0;
  g_base64_decode_step(text.data(), text.size(), reinterpret_cast<guchar*>(out.data()), &state, &save);
}

void DecodeWithOpenSsl(std::string_view text, std::string& out) {
  EVP_DecodeBlock(reinterpret_cast<unsigned char*>(out.data()),
                  reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
}

CHyperscan::CHyperscan(const std::vector<std::string>& literals) {
  std::vector<std::string> texts;
  std::vector<const char*> expressions;
  std::vector<unsigned> ids;
  for (const std::string& literal : literals) {
    ids.push_back(static_cast<unsigned>(texts.size()));
    texts.push_back(Escaped(literal));
  }
  for (const std::string& text : texts) {
    expressions.push_back(text.c_str());
  }
  hs_compile_error_t* error = nullptr;
  if (hs_compile_multi(expressions.data(), nullptr, ids.data(), static_cast<unsigned>(ids.size()),
                       HS_MODE_BLOCK, nullptr, &database_, &error) != HS_SUCCESS ||
      hs_alloc_scratch(database_, &scratch_) != HS_SUCCESS) {
    throw std::runtime_error("Hyperscan does not take the literals");
  }
}

CHyperscan::~CHyperscan() {
  hs_free_scratch(scratch_);
  hs_free_database(database_);
}

std::size_t CHyperscan::CountMatches(std::string_view text) const {
  std::size_t matches = 0;
  const auto count = [](unsigned, unsigned long long, unsigned long long, unsigned, void* context) {
    ++*static_cast<std::size_t*>(context);
    return 0;
  };
  hs_scan(database_, text.data(), static_cast<unsigned>(text.size()), 0, scratch_, count, &matches);
  return matches;
}

}  // namespace tavira::bench
