#include "emulator/port/exchange.h"

namespace lxemu {

std::string_view UnwrapFrame(std::string_view frame) {
  if (frame.size() < kFrameStart.size() + kFrameEnd.size() || !frame.starts_with(kFrameStart) ||
      !frame.ends_with(kFrameEnd)) {
    return {};
  }
  return frame.substr(kFrameStart.size(), frame.size() - kFrameStart.size() - kFrameEnd.size());
}

void tagExchange::RecordSent(std::string_view raw) {
  const std::string_view commands = UnwrapFrame(raw);
  is_framed = commands.data() != nullptr;
  const std::string_view shown = is_framed ? commands : raw;
  sent = shown.substr(0, kMaximumLogged);
  sent_bytes = shown.size();
}

void tagExchange::RecordAnswer(std::string_view full_answer) {
  answer = full_answer.substr(0, kMaximumLogged);
  answer_bytes = full_answer.size();
}

std::string RunExchange(CPrinter& printer, tagFaultPlan& faults, std::string_view raw,
                        tagExchange& exchange) {
  ++faults.sends_seen;
  exchange.RecordSent(raw);
  std::string answer = printer.Execute(UnwrapFrame(raw));
  const bool is_silent =
      faults.silent || (faults.silent_from != 0 && faults.sends_seen >= faults.silent_from);
  if (is_silent) {
    answer.clear();
  } else if (faults.cut_answer_at && faults.sends_seen >= faults.cut_from &&
             answer.size() > *faults.cut_answer_at) {
    answer.resize(*faults.cut_answer_at);
  }
  exchange.RecordAnswer(answer);
  return answer;
}

}  // namespace lxemu
