#include "emulator/printer/printer.h"

#include "emulator/printer/command_interpreter.h"

namespace lxemu {

CPrinter::CPrinter(MillisecondClock now) : state_(std::move(now)) {}

std::string CPrinter::Execute(std::string_view commands) {
  return CCommandInterpreter(state_).Run(commands);
}

std::string CPrinter::Setting(std::string_view key) const {
  return key == kStatusKey ? state_.StatusText() : std::string(state_.settings.Current(key));
}

void CPrinter::SetSetting(std::string_view key, std::string_view value) {
  if (key == kStatusKey) {
    SetState(value);
    return;
  }
  state_.settings.SetCurrent(key, value);
  state_.settings.SetSaved(key, value);
}

void CPrinter::SetFactorySetting(std::string_view key, std::string_view value) {
  state_.settings.SetFactory(key, value);
}

bool CPrinter::PutFile(std::string_view qualified_name, std::string bytes, bool is_protected) {
  const std::optional<tagFileName> name = ParseFileName(qualified_name);
  if (!name) {
    return false;
  }
  state_.files.Put(*name, std::move(bytes));
  state_.files.SetProtected(*name, is_protected);
  return true;
}

std::optional<std::string> CPrinter::File(std::string_view qualified_name) const {
  const std::optional<tagFileName> name = ParseFileName(qualified_name);
  const tagStoredFile* file = name ? state_.files.Find(*name) : nullptr;
  return file != nullptr ? std::optional(file->bytes) : std::nullopt;
}

void CPrinter::SetProtected(std::string_view qualified_name, bool on) {
  if (const std::optional<tagFileName> name = ParseFileName(qualified_name)) {
    state_.files.SetProtected(*name, on);
  }
}

bool CPrinter::IsProtected(std::string_view qualified_name) const {
  const std::optional<tagFileName> name = ParseFileName(qualified_name);
  const tagStoredFile* file = name ? state_.files.Find(*name) : nullptr;
  return file != nullptr && file->is_protected;
}

void CPrinter::SetState(std::string_view two_letters) {
  state_.status.Hold(two_letters);
}

void CPrinter::SetBusyFor(std::uint32_t ms) {
  state_.status.BusyFor(ms, "PR");
}

void CPrinter::PowerCycle() {
  state_.settings.LoadSaved();
  state_.files.EraseDevice(kVolatileDevice);
  state_.status.Reset();
}

void CPrinter::FactoryReset() {
  state_.settings.RestoreFactory();
  state_.settings.Save();
  for (const char device : {kVolatileDevice, kFlashDevice, kSystemDevice}) {
    state_.files.EraseDevice(device);
  }
  state_.status.Reset();
}

}  // namespace lxemu
