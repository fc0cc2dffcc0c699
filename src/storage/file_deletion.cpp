#include "storage/file_deletion.h"

#include "command/fixed_commands.h"

namespace tavira {
namespace {

/** Refreshes the lists; `is_listed` receives whether the file is still in one of them. */
std::int32_t LookForFile(CRegisteredFiles& files, std::initializer_list<std::int32_t> lists,
                         std::string_view name, bool& is_listed) {
  for (const std::int32_t list : lists) {
    const std::int32_t result = files.Refresh(list);
    if (result != TVMGR_OK) {
      return result;
    }
  }
  is_listed = files.IsListed(lists, name);
  return TVMGR_OK;
}

/** One pass of the confirmation; −7 for a kind that deletes nothing. */
std::int32_t ConfirmationPass(CRegisteredFiles& files, const tagFileRequest& request, bool& is_listed) {
  switch (request.kind) {
    case TVMGR_REQUEST_DELETE_GRAPHIC:
      return LookForFile(files, {TVMGR_LIST_PNG, TVMGR_LIST_GRF}, request.primary, is_listed);
    case TVMGR_REQUEST_DELETE_FORMAT:
      return LookForFile(files, {TVMGR_LIST_FMT, TVMGR_LIST_ZPL}, request.primary, is_listed);
    case TVMGR_REQUEST_DELETE_FONT:
      return LookForFile(files, {TVMGR_LIST_TTF, TVMGR_LIST_TTE}, request.primary, is_listed);
    case TVMGR_REQUEST_BACKGROUND:
      return files.Refresh(TVMGR_LIST_BACKGROUND);
    default:
      return TVMGR_BAD_ARGUMENT;
  }
}

}  // namespace

std::int32_t DeleteStoredFile(CPrinterPort& port, CRegisteredFiles& files, const tagFileRequest& request) {
  if (!port.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  const std::string_view name = UpToTerminator(request.primary);
  if (name.empty()) {
    return TVMGR_BAD_ARGUMENT;
  }
  std::string& commands = port.NewCommand();
  commands.append("^XA^F(AE:").append(name).append(",N^XZ");  // the file's attribute off
  commands.append("^XA^IDE:").append(name).append("^XZ").append(kClosingCommand);
  const std::int32_t sent = port.Exchange();
  if (sent != TVMGR_OK) {
    return sent;
  }
  bool is_listed = false;
  for (int pass = 0; pass < kConfirmationPasses; ++pass) {
    port.Clock().Sleep(kConfirmationIntervalMs);
    const std::int32_t result = ConfirmationPass(files, request, is_listed);
    if (result != TVMGR_OK) {
      return result;
    }
    // The background file is not looked for, and yet takes every pass: that is how this request is defined.
    if (!is_listed && request.kind != TVMGR_REQUEST_BACKGROUND) {
      return TVMGR_OK;
    }
  }
  return is_listed ? TVMGR_NOT_CONFIRMED : TVMGR_OK;
}

}  // namespace tavira
