#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tavira::bench {

/** A kind of input: makes one of about so many bytes; each number another one, if there is chance in it. */
struct tagInputKind {
  std::string_view name;
  std::function<std::string(std::size_t size, unsigned number)> make;
};

/**
 * Reports how much longer a byte takes in a large input than in a small one, for the kind of input where that
 * is most. Linear work stays near 1.
 */
void ReportLinearity(std::string_view id, std::string_view work, const std::vector<tagInputKind>& kinds,
                     const std::vector<std::size_t>& sizes, const std::function<void(std::string_view)>& run,
                     double goal);

}  // namespace tavira::bench
