#include "profile/host_profile.h"

#include <filesystem>
#include <stdexcept>

#include "files/host_data.h"
#include "output/command_error.h"
#include "output/text_encoding.h"
#include "output/text_layout.h"
#include "profile/json_lines.h"

namespace tvmgr {
namespace {

[[noreturn]] void Refuse(const std::string& path, const CFileProblem& problem) {
  throw CInputFileError(
      "the file \"" + path + "\"" +
      (problem.Line() == 0 ? " cannot be used: " : ", line " + std::to_string(problem.Line()) + ": ") +
      MakeVisible(problem.what()));
}

// Before it is read: what somebody names by mistake may be gigabytes.
std::string ReadSmallFile(const std::string& path, std::size_t largest) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(std::filesystem::path(ToWide(path)), error);
  if (!error && size > largest) {
    Refuse(path, CFileProblem(0, "it is larger than " + std::to_string(largest) + " bytes"));
  }
  return ReadHostFile(path);
}

std::string BytesOf(std::string_view shown) {
  const auto convert = [](std::string_view text) {
    std::optional<std::string> bytes = ToAnsi(text);
    if (!bytes) {
      throw std::invalid_argument("has characters that this computer's ANSI code page lacks");
    }
    return *std::move(bytes);
  };
  std::optional<std::string> bytes = UndoEscapes(shown, convert);
  if (!bytes) {
    throw std::invalid_argument(
        "has a backslash that is followed neither by xNN (a byte) nor by another one");
  }
  return *std::move(bytes);
}

}  // namespace

tagProfile ParseHostProfile(const std::string& path, const std::string& text) {
  try {
    return ParseProfile(text, BytesOf);
  } catch (const CFileProblem& problem) {
    Refuse(path, problem);
  }
}

tagProfile ReadProfile(const std::string& path) {
  return ParseHostProfile(path, ReadSmallFile(path, kLargestProfile));
}

CLabels::CLabels(const std::string& path) {
  if (path.empty()) {
    RefuseColumn(kNameHeading, "without --labels");
    return;
  }
  try {
    labels_ = ParseLabels(ReadSmallFile(path, kLargestLabels));
  } catch (const CFileProblem& problem) {
    Refuse(path, problem);
  }
}

tagCell CLabels::NameCell(std::int32_t id) const {
  const auto found = labels_.find(id);
  return tagCell::TextOrNull(found == labels_.end() ? std::string() : found->second.name);
}

tagCell CLabels::WithUnit(std::int32_t id, tagCell cell) const {
  const auto found = labels_.find(id);
  if (found == labels_.end() || std::holds_alternative<std::nullptr_t>(cell.value)) {
    return cell;
  }
  const std::string meaning = MeaningOfValue(found->second, cell.shown);
  cell.shown += (found->second.unit.empty() ? "" : " " + found->second.unit) +
                (meaning.empty() ? "" : " (" + meaning + ")");
  return cell;
}

tagCell CLabels::MeaningCell(std::int32_t id, const std::optional<std::string>& bytes) const {
  const auto found = labels_.find(id);
  return tagCell::TextOrNull(
      found == labels_.end() || !bytes ? std::string() : MeaningOfValue(found->second, EscapeBytes(*bytes)));
}

std::string CLabels::WhyNot(std::int32_t id, const std::string& bytes) const {
  const auto found = labels_.find(id);
  return found == labels_.end() ? std::string() : WhyNotAllowed(found->second, EscapeBytes(bytes));
}

}  // namespace tvmgr
