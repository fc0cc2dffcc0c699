#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tvmgr {

/** One of the printer's file lists and what belongs to it. */
struct tagFileKind {
  std::int32_t list;              /**< a value of enum TvmgrFileList */
  std::string_view name;          /**< as in --list: "png" */
  std::string_view group;         /**< "graphic", "font", "format", "background", "conversion" */
  std::string_view extension;     /**< with the dot, upper case */
  char object_letter;             /**< extension letter in a download command; 0: not stored by one */
  std::uint32_t register_request; /**< a value of enum TvmgrRequest; 0: none */
  std::uint32_t delete_request;   /**< likewise */
};

/** All file lists. */
std::span<const tagFileKind> AllFileKinds();

/** The kind of a file with this name; none when its extension says nothing. */
const tagFileKind* KindOfFile(std::string_view file_name);

/** True for a stored format, which is fetched and stored in another way than the other files. */
bool IsFormat(const tagFileKind& kind);

/** Ends the command (usage) when a name cannot stand in a printer command, wildcards included. */
void RequireFileName(std::string_view name);

}  // namespace tvmgr
