#include "emulator/printer/command_interpreter.h"

#include <algorithm>
#include <array>

namespace lxemu {
namespace {

constexpr char kStx = '\x02';
constexpr char kEtx = '\x03';
// More than any sensible stream asks for; keeps the byte count of one answer within 32 bits.
constexpr std::size_t kMaximumAnswer = std::size_t{1} << 30;

bool IsKeyCharacter(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

std::string_view WithoutLineEnds(std::string_view value) {
  const auto first = value.find_first_not_of("\r\n");
  return first == value.npos ? std::string_view()
                             : value.substr(first, value.find_last_not_of("\r\n") + 1 - first);
}

std::string Normalised(std::string_view key, std::string value, const tagQuirks& quirks) {
  if (quirks.upper_case_values) {
    value = FoldCase(value);
  }
  const auto padded = quirks.padded_keys.find(key);
  if (padded != quirks.padded_keys.end() && value.size() < padded->second) {
    value.insert(0, padded->second - value.size(), '0');
  }
  return value;
}

}  // namespace

struct CCommandInterpreter::tagVerb {
  std::string_view text;
  bool is_format;          // behind the format prefix, else behind the control prefix
  bool belongs_in_format;  // between ^XA and ^XZ
  Handler handler;
};

const CCommandInterpreter::tagVerb* CCommandInterpreter::FindVerb(std::string_view text, bool is_format) {
  using C = CCommandInterpreter;
  static constexpr std::array kVerbs = std::to_array<tagVerb>({
      {"XA", true, false, &C::OpenFormat},
      {"XZ", true, false, &C::CloseFormat},
      {"S(", true, true, &C::SetOneSetting},
      {"FX", true, false, &C::SkipComment},
      {"FS", true, false, &C::Nothing},
      {"JUS", true, true, &C::SaveSettings},
      {"JUF", true, true, &C::RestoreFactorySettings},
      {"H(E", true, true, &C::AnswerClosingQuery},
      {"H(Y", true, true, &C::SendObject},
      {"HF", true, true, &C::SendFormat},
      {"HW", true, true, &C::ListDirectory},
      {"F(A", true, true, &C::SetAttribute},
      {"ID", true, true, &C::RemoveFiles},
      {"WD", true, true, &C::RemoveFiles},
      {"DF", true, true, &C::StoreFormat},
      {"ST", true, true, &C::SetClock},
      {"JB", true, true, &C::InitializeDevice},
      {"CT", true, false, &C::SetControlPrefix},
      {"CC", true, false, &C::SetFormatPrefix},
      {"CD", true, false, &C::SetDelimiter},
      {"H(", false, false, &C::QuerySetting},
      {"DY", false, false, &C::StoreObject},
      {"WC", false, false, &C::PrintConfiguration},
      {"J(C", false, false, &C::CleanHead},
      {"W(PNC", false, false, &C::PrintTestPattern},
      {"JC", false, false, &C::CalibrateMedia},
  });
  const auto found = std::find_if(kVerbs.begin(), kVerbs.end(), [&](const tagVerb& verb) {
    return verb.is_format == is_format && text.starts_with(verb.text);
  });
  return found == kVerbs.end() ? nullptr : &*found;
}

CCommandInterpreter::CCommandInterpreter(tagPrinterState& state)
    : state_(state), dialects_(state.settings.Prefixes(), state.quirks.strict_prefix) {}

std::string CCommandInterpreter::Run(std::string_view stream) {
  stream_ = stream;
  for (position_ = 0; position_ < stream_.size();) {
    if (dialects_.StartsCommand(stream_[position_])) {
      RunCommand();
    } else {
      ++position_;
    }
  }
  return std::move(answer_);
}

void CCommandInterpreter::RunCommand() {
  // A byte can start commands of several dialects; the first that makes sense of what follows has it.
  if (RunIn(Dialect::kAlternative) || RunIn(Dialect::kDefault) || RunIn(Dialect::kInForce)) {
    ++state_.counts.understood;
    return;
  }
  ++state_.counts.unknown;
  ++position_;
}

bool CCommandInterpreter::RunIn(Dialect dialect) {
  const char prefix = stream_[position_];
  const std::string_view text = stream_.substr(position_ + 1);
  const tagVerb* verb = dialects_.IsFormatPrefix(prefix, dialect) ? FindVerb(text, true) : nullptr;
  if (verb == nullptr && dialects_.IsControlPrefix(prefix, dialect)) {
    verb = FindVerb(text, false);
  }
  if (verb == nullptr) {
    return false;
  }
  if (verb->belongs_in_format && !is_in_format_) {
    ++state_.counts.outside_format;
  }
  dialect_ = dialect;
  position_ += 1 + verb->text.size();
  (this->*verb->handler)();
  return true;
}

void CCommandInterpreter::OpenFormat() {
  is_in_format_ = true;
}

void CCommandInterpreter::CloseFormat() {
  is_in_format_ = false;
}

void CCommandInterpreter::SkipComment() {
  TakeParameters();
}

void CCommandInterpreter::SetControlPrefix() {
  TakePrefixByte(kControlPrefixKey);
}

void CCommandInterpreter::SetFormatPrefix() {
  TakePrefixByte(kFormatPrefixKey);
}

void CCommandInterpreter::SetDelimiter() {
  TakePrefixByte(kDelimiterKey);
}

void CCommandInterpreter::TakePrefixByte(std::string_view key) {
  if (position_ == stream_.size()) {
    ++state_.counts.malformed;
    return;
  }
  // Exactly one raw byte, also when it is a prefix character itself.
  state_.settings.SetCurrent(key, HexByte(stream_[position_++]));
  dialects_.SetInForce(state_.settings.Prefixes());
}

void CCommandInterpreter::SetOneSetting() {
  const std::string key = TakeKey();
  const bool has_delimiter = !Rest().empty() && dialects_.IsDelimiter(Rest().front(), dialect_);
  if (key.empty() || !has_delimiter) {
    ++state_.counts.malformed;
    return;
  }
  ++position_;
  const std::string_view value = WithoutLineEnds(TakeParameters());
  if (value.empty()) {
    ++state_.counts.malformed;
    return;
  }
  const tagQuirks& quirks = state_.quirks;
  if (quirks.ignore_sets || quirks.refused_keys.contains(key) ||
      !state_.settings.SetCurrent(key, Normalised(key, std::string(value), quirks))) {
    ++state_.counts.refused;
    return;
  }
  if (key.starts_with("CCC")) {
    dialects_.SetInForce(state_.settings.Prefixes());
  }
}

void CCommandInterpreter::SetClock() {
  state_.clock_text = WithoutLineEnds(TakeParameters());
}

void CCommandInterpreter::QuerySetting() {
  const std::string key = TakeKey();
  if (key.empty() || !Trim(TakeParameters()).empty() || (key != kStatusKey && !CSettingMemory::Knows(key))) {
    ++state_.counts.malformed;
    return;
  }
  const tagQuirks& quirks = state_.quirks;
  if (quirks.unanswered_keys.contains(key)) {
    ++state_.counts.refused;
    return;
  }
  const tagPrefixes& prefixes = dialects_.AnswerPrefixes(dialect_);
  std::string payload;
  payload += prefixes.format;
  payload.append("S(").append(key, 0, 3);
  payload += prefixes.delimiter;
  payload += key[4];
  payload += prefixes.delimiter;
  if (const auto fixed = quirks.fixed_answers.find(key); fixed != quirks.fixed_answers.end()) {
    payload += fixed->second;
  } else if (key == kStatusKey) {
    payload += state_.StatusText();
  } else {
    payload += state_.settings.Current(key);
  }
  AppendFrame(payload);
}

void CCommandInterpreter::SaveSettings() {
  state_.settings.Save();
}

void CCommandInterpreter::RestoreFactorySettings() {
  state_.settings.RestoreFactory();
  dialects_.SetInForce(state_.settings.Prefixes());
}

void CCommandInterpreter::AnswerClosingQuery() {
  AppendFrame("LX-R4100");
}

void CCommandInterpreter::PrintConfiguration() {
  StartMaintenance("PR");
}

void CCommandInterpreter::CleanHead() {
  StartMaintenance("CL");
}

void CCommandInterpreter::PrintTestPattern() {
  StartMaintenance("PR");
}

void CCommandInterpreter::CalibrateMedia() {
  StartMaintenance("SP");
}

void CCommandInterpreter::StartMaintenance(std::string_view kind) {
  state_.status.BusyFor(state_.quirks.maintenance_ms, kind);
}

std::string_view CCommandInterpreter::TakeParameters() {
  const std::size_t begin = position_;
  while (position_ < stream_.size() && !dialects_.EndsParameters(stream_[position_], dialect_)) {
    ++position_;
  }
  return stream_.substr(begin, position_ - begin);
}

std::string CCommandInterpreter::TakeKey() {
  // Five bytes whatever they are: a letter may be a prefix character in force.
  const std::string_view text = Rest().substr(0, kKeyLength);
  if (text.size() < kKeyLength || !std::all_of(text.begin(), text.begin() + 3, IsKeyCharacter) ||
      !dialects_.IsDelimiter(text[3], dialect_) || !IsKeyCharacter(text[4])) {
    return {};
  }
  position_ += kKeyLength;
  return std::string(text.substr(0, 3)) + ',' + text[4];
}

void CCommandInterpreter::AppendFrame(std::string_view payload) {
  const std::string& garbage = state_.quirks.garbage_between_frames;
  if (!HasRoomFor(payload.size() + 2 * garbage.size() + 4)) {
    return;
  }
  answer_ += garbage;
  answer_ += kStx;
  answer_ += payload;
  answer_ += kEtx;
  answer_ += "\r\n";
  answer_ += garbage;
}

bool CCommandInterpreter::HasRoomFor(std::size_t bytes) {
  if (bytes > kMaximumAnswer - answer_.size()) {
    ++state_.counts.refused;
    return false;
  }
  return true;
}

}  // namespace lxemu
