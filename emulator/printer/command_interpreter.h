#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "emulator/printer/dialect.h"
#include "emulator/printer/printer_state.h"

namespace lxemu {

/// Runs one command stream against a printer. Reads every byte a bounded number of times, so the time grows
/// with the length of the stream only; any bytes are safe.
class CCommandInterpreter {
 public:
  /// The state outlives the interpreter.
  explicit CCommandInterpreter(tagPrinterState& state);

  /// Returns the answers. The stream must outlive the call.
  std::string Run(std::string_view stream);

 private:
  struct tagVerb;
  using Handler = void (CCommandInterpreter::*)();

  static const tagVerb* FindVerb(std::string_view text, bool is_format);
  void RunCommand();
  bool RunIn(Dialect dialect);

  // The handlers start with position_ behind the verb and leave it behind what they read.
  void OpenFormat();
  void CloseFormat();
  void Nothing() {}
  void SkipComment();
  void SetControlPrefix();
  void SetFormatPrefix();
  void SetDelimiter();
  void SetOneSetting();
  void SetClock();
  void QuerySetting();
  void SaveSettings();
  void RestoreFactorySettings();
  void AnswerClosingQuery();
  void PrintConfiguration();
  void CleanHead();
  void PrintTestPattern();
  void CalibrateMedia();
  // Files: file_commands.cpp.
  void ListDirectory();
  void StoreFormat();
  void StoreObject();
  void SendFormat();
  void SendObject();
  void RemoveFiles();
  void SetAttribute();
  void InitializeDevice();

  std::string_view Rest() const { return stream_.substr(position_); }
  /// The parameters up to the next command.
  std::string_view TakeParameters();
  /// The text up to the next delimiter, which is removed from it together with that part.
  std::string_view SplitField(std::string_view& text) const;
  /// Reads "CLR,Z" whatever its delimiter; empty, and nothing read, when something else stands there.
  std::string TakeKey();
  void TakePrefixByte(std::string_view key);
  void PutFile(const tagFileName& name, std::string bytes);
  void StartMaintenance(std::string_view kind);
  void AppendFrame(std::string_view payload);
  /// False, and counted as refused, when the answer would grow beyond all measure.
  bool HasRoomFor(std::size_t bytes);

  tagPrinterState& state_;
  CDialects dialects_;
  std::string_view stream_;
  std::size_t position_ = 0;
  Dialect dialect_ = Dialect::kDefault;
  bool is_in_format_ = false;
  std::string answer_;
};

}  // namespace lxemu
