#include "output/json_output.h"

#include "output/record_output.h"
#include "output/result_words.h"

namespace tvmgr {
namespace {

struct tagDocument {
  Json command;
  Json printer;
  Json step;
  Json result = Json::object();
  bool has_lines = false;
};

// A process is one run, and errors come from everywhere.
tagDocument& Document() {
  static tagDocument document;
  return document;
}

Json ErrorJson(const CCommandError& error) {
  const tagErrorDetails& details = error.Details();
  return {{"exit_code", error.ExitCode()},
          {"code", details.code ? Json(*details.code) : Json()},
          {"step", details.step.empty() ? Document().step : Json(details.step)},
          {"printer", Document().printer},
          {"text", error.what()},
          {"advice", TextOrNull(AdviceFor(error))}};
}

void Write(const Json& exit_code, const Json& error, bool compact) {
  Json json = {
      {"version", kJsonVersion}, {"command", Document().command}, {"exit_code", exit_code}, {"error", error}};
  json.update(Document().result);
  WriteOutput(json.dump(compact ? -1 : 2, ' ', false, Json::error_handler_t::replace) + "\n");
}

}  // namespace

void NoteJsonCommand(const std::string& command) {
  Document().command = TextOrNull(command);
}

void NoteJsonPrinter(const Json& printer) {
  Document().printer = printer;
}

void NoteJsonStep(const std::string& step) {
  Document().step = step;
}

void SetJsonResult(Json members) {
  Document().result = std::move(members);
}

void AddJsonMember(const std::string& name, Json value) {
  Document().result[name] = std::move(value);
}

void WriteJsonLine() {
  Write(nullptr, nullptr, true);
  Document().has_lines = true;
  Document().result = Json::object();
}

void WriteJsonDocument(int exit_code, const CCommandError* error) {
  if (!Document().has_lines || error != nullptr) {
    Write(exit_code, error == nullptr ? Json() : ErrorJson(*error), Document().has_lines);
  }
}

Json PrinterJson(const std::string& kind, const std::string& value, const std::string& name) {
  return {{"kind", TextOrNull(kind)}, {"value", TextOrNull(value)}, {"name", TextOrNull(name)}};
}

Json TextOrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

}  // namespace tvmgr
