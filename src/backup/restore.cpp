#include "backup/restore.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include "command/command_builder.h"
#include "command/fixed_commands.h"
#include "link/frame.h"
#include "settings/ignore_outcome.h"

namespace tavira {
namespace {

constexpr std::uint64_t kBytesPerMinute = 20971520;
constexpr std::uint64_t kMostMinutes = 50;
constexpr std::uint32_t kMsPerMinute = 60000;
constexpr std::uint32_t kSettleMs = 1000;
constexpr std::size_t kMarks = kFrameStart.size() + kFrameEnd.size();

/** A file's bytes between the frame marks, in the one buffer that is sent. */
struct tagFramedFile {
  std::unique_ptr<char[]> bytes;
  std::uint64_t file_size = 0;

  std::string_view Frame() const { return {bytes.get(), static_cast<std::size_t>(file_size) + kMarks}; }
};

std::int32_t ReadFramed(IFileSystem& files, const WideString& path, tagFramedFile& framed) {
  const auto file = files.OpenForReading(files.FullPath(path));
  if (file == nullptr) {
    return TVMGR_FILE_ERROR;
  }
  std::uint64_t size = 0;
  if (!file->GetSize(size) || size > std::numeric_limits<std::uint32_t>::max() - kMarks) {
    return TVMGR_FILE_READ_ERROR;  // one send carries at most 4 GiB
  }
  if (size == 0) {
    return TVMGR_OK;
  }
  framed.bytes.reset(new (std::nothrow) char[static_cast<std::size_t>(size) + kMarks]);
  std::size_t got = 0;
  if (framed.bytes == nullptr ||
      !file->Read({framed.bytes.get() + kFrameStart.size(), static_cast<std::size_t>(size)}, got) ||
      got != size) {
    return TVMGR_FILE_READ_ERROR;
  }
  std::copy(kFrameStart.begin(), kFrameStart.end(), framed.bytes.get());
  std::copy(kFrameEnd.begin(), kFrameEnd.end(), framed.bytes.get() + kFrameStart.size() + size);
  framed.file_size = size;
  return TVMGR_OK;
}

}  // namespace

std::uint32_t RestoreTimeout(std::int32_t port_type, std::uint64_t size) {
  if (port_type != kPortTypeNetwork || size <= kBytesPerMinute) {
    return kDefaultTimeoutMs;
  }
  return static_cast<std::uint32_t>(std::min(size / kBytesPerMinute + 1, kMostMinutes)) * kMsPerMinute;
}

std::int32_t CRestore::Run(const TvmgrChar* path) {
  if (!port_.HasLink()) {
    return TVMGR_NOT_INITIALIZED;
  }
  tagFramedFile framed;
  std::int32_t result = ReadFramed(files_, WideString(ViewHostText(path)), framed);
  if (result != TVMGR_OK || framed.file_size == 0) {
    return result;
  }
  const CGuardedScope guarded(guard_, false);
  result = Send(framed.Frame(), framed.file_size);
  framed.bytes.reset();
  if (result != TVMGR_OK) {
    return result;
  }
  port_.Clock().Sleep(kSettleMs);
  guard_.Invalidate();
  IgnoreOutcome([this] { WriteModeBack(); });  // the load that follows shows the printer's state in any case
  return full_load_.LoadEverything();
}

std::int32_t CRestore::Send(std::string_view frame, std::uint64_t file_size) {
  CPortLink& link = port_.Link();
  port_.NewCommand();
  const tagPortDescription description = link.ExchangeDescription();
  const std::int32_t opened = link.Open(&description);
  if (opened != TVMGR_OK) {
    return opened;
  }
  const CPortCloser closer(link);
  return SendAndReceive(link, port_.Clock(), frame, RestoreTimeout(description.port_type, file_size));
}

void CRestore::WriteModeBack() {
  std::string& commands = port_.NewCommand();
  AppendSetCommand(commands, TVMGR_SETTING_CMP_U, guard_.ModeText());
  commands.append(kSaveCommand).append(kClosingCommand);
  port_.Exchange();
}

}  // namespace tavira
