#include "command/prefix.h"

#include "command/answer_parser.h"

namespace tavira {

bool IsDefaultPrefixAnswer(std::string_view answer) {
  const auto payload = CAnswerFrames(answer).Next();
  if (!payload || payload->size() < 11) {
    return true;
  }
  // "^S(CCC,T" echoed with the format prefix and delimiter in force, a separator, and the control prefix in
  // hex.
  return (*payload)[0] == '^' && (*payload)[6] == ',' && (*payload)[9] == '7' && (*payload)[10] == 'E';
}

}  // namespace tavira
