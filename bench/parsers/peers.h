#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

struct hs_database;
struct hs_scratch;

namespace tavira::bench {

// What a user would take instead of our parsers. Libraries of their own: their headers are included nowhere else.

/** Both write into a buffer that is as large as the text. */
void DecodeWithGlib(std::string_view text, std::string& out);
void DecodeWithOpenSsl(std::string_view text, std::string& out);

/** Several literals as one Hyperscan database. Throws std::runtime_error when it cannot be made. */
class CHyperscan {
 public:
  explicit CHyperscan(const std::vector<std::string>& literals);
  ~CHyperscan();
  CHyperscan(const CHyperscan&) = delete;
  CHyperscan& operator=(const CHyperscan&) = delete;

  std::size_t CountMatches(std::string_view text) const;

 private:
  hs_database* database_ = nullptr;
  hs_scratch* scratch_ = nullptr;
};

}  // namespace tavira::bench
