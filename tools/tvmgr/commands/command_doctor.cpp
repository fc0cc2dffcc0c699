#include <windows.h>

#include "commands/commands.h"
#include "doctor/checkup.h"
#include "output/console.h"
#include "output/json_output.h"
#include "output/record_output.h"
#include "output/text_layout.h"
#include "trace/trace_file.h"

namespace tvmgr {
namespace {

ETone ToneOf(EHealth health) {
  return health == EHealth::kWell ? ETone::kGood : health == EHealth::kFailed ? ETone::kBad : ETone::kOpen;
}

// At once: a later step may take its time, or take the process with it.
void Print(const tagFinding& finding) {
  constexpr std::size_t kVerdictWidth = 11;
  const std::string name = NameOf(finding.health);
  const std::string indent(kVerdictWidth, ' ');
  std::string text = indent + MakeVisible(finding.reason) + "\n";
  text += finding.cure.empty() ? "" : indent + "-> " + MakeVisible(finding.cure) + "\n";
  if (const std::optional<std::size_t> columns = OutputColumns()) {
    text = WrapLines(text, *columns);
  }
  WriteOutput(ShownVerdict(name, ToneOf(finding.health)) + std::string(kVerdictWidth - name.size(), ' ') +
              finding.step + "\n" + text);
}

void SetResult(const CCheckup& checkup) {
  Json steps = Json::array();
  for (const tagFinding& finding : checkup.Findings()) {
    steps.push_back({{"step", finding.step},
                     {"verdict", NameOf(finding.health)},
                     {"reason", finding.reason},
                     {"cure", TextOrNull(finding.cure)},
                     {"took_ms", finding.took_ms}});
  }
  SetJsonResult({{"printer", PrinterJson(checkup.Choice())},
                 {"answer_ms", checkup.AnswerMs() ? Json(*checkup.AnswerMs()) : Json()},
                 {"steps", steps}});
}

}  // namespace

int RunDoctor(const tagGlobalOptions& global, const tagDoctorOptions& options) {
  CCheckup checkup(global, options.reads_settings, [&](const tagFinding& finding) {
    if (!global.json) {
      Print(finding);
    }
  });
  checkup.Run();
  SetResult(checkup);
  const int exit_code = ExitCodeOf(checkup.Findings());
  if (checkup.IsStuck()) {
    if (global.json) {
      WriteJsonDocument(exit_code, nullptr);
    }
    CloseTrace(exit_code, true);
    // No DLL is told: one of them still has a thread that does not come back.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exit_code));
  }
  return exit_code;
}

}  // namespace tvmgr
