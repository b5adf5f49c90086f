// The commands of the colour correction. The two that apply are not the same: each reads its own name for the
// turn of the picture, and only the one with arguments writes numbers.
#include <string_view>

#include "QTD/frame/ArgumentView.h"
#include "gl/stages/QGLIPColorCorrection.h"

namespace {

using Pass = RenderObjects::QGLColorCorrection;

// A gain or offset: the stage's parameter, and where the pass keeps it.
struct Level {
  const char* name;
  double Pass::*member;
  const char* missing;
};

constexpr Level kLevels[] = {
    {"gain.r", &Pass::gainR, "1"}, {"gain.g", &Pass::gainG, "1"}, {"gain.b", &Pass::gainB, "1"},
    {"offs.r", &Pass::offsR, "0"}, {"offs.g", &Pass::offsG, "0"}, {"offs.b", &Pass::offsB, "0"},
};

// What else a command carries into the pass, as text.
struct Forwarded {
  const char* target;     // the pass's parameter
  const char* parameter;  // the stage's
  const char* missing;
};

constexpr Forwarded kApplied[] = {
    {"gamma", "gamma", ""},
    {"image.flip.vert", "flip.vert", "0"},
    {"image.color.coef", "image.color.coef", "1."},
    {"debug.output", "debug.output", ""},
    {"debug.mode", "debug.mode", ""},
};

constexpr Forwarded kAppliedByCommand[] = {
    {"image.flip.vert", "image.flip.vert", "0"},
    {"image.color.coef", "image.color.coef", "1."},
};

constexpr QTD::Default kAfterReset[] = {
    {"gain.r", "1.000000"},
    {"gain.g", "1.000000"},
    {"gain.b", "1.000000"},
    {"offs.r", "0"},
    {"offs.g", "0"},
    {"offs.b", "0"},
    {"gamma", "1"},
    {"debug.mode", "0"},
    {"debug.output", "0"},
    {"image.color.coef", "1.000000"},
    {"image.color.high", "1.000000"},
};

// Leaves the colour factor alone, and sets the turn.
constexpr QTD::Default kAfterResetByCommand[] = {
    {"gain.r", "1.000000"}, {"gain.g", "1.000000"},   {"gain.b", "1.000000"}, {"offs.r", "0"},
    {"offs.g", "0"},        {"offs.b", "0"},          {"gamma", "1"},         {"debug.output", "0"},
    {"debug.mode", "0"},    {"image.flip.vert", "0"},
};

}  // namespace

uint32_t QGLIPColorCorrection::Apply() {
  if (!pass) return ZYN_ERR_NOT_READY;
  // All are read before any is written: a text that is no number leaves the pass as it was.
  double levels[std::size(kLevels)];
  for (size_t n = 0; n < std::size(kLevels); ++n)
    levels[n] = parameters.GetDouble(kLevels[n].name, kLevels[n].missing);
  const QTD::RMutexLock guard(pass->Lock());
  for (size_t n = 0; n < std::size(kLevels); ++n) (*pass).*kLevels[n].member = levels[n];
  for (const Forwarded& row : kApplied)
    pass->Parameters().Set(row.target, parameters.GetString(row.parameter, row.missing));
  return 0;
}

uint32_t QGLIPColorCorrection::ApplyArguments(QTD::ARGUMENTS* args) {
  if (!pass) return ZYN_ERR_NOT_READY;
  QTD::ArgumentView view(args);
  const auto text = [&](const char* key, const char* missing) {
    return view.GetString(key, parameters.GetString(key, missing));
  };
  double levels[std::size(kLevels)];
  for (size_t n = 0; n < std::size(kLevels); ++n)
    levels[n] = QTD::ParseDouble(text(kLevels[n].name, kLevels[n].missing));
  const double gamma = QTD::ParseDouble(text("gamma", "1"));
  const int mode = QTD::ParseInt(text("debug.mode", "0"));
  const int output = QTD::ParseInt(text("debug.output", "0"));

  const QTD::RMutexLock guard(pass->Lock());
  for (size_t n = 0; n < std::size(kLevels); ++n) (*pass).*kLevels[n].member = levels[n];
  pass->Parameters()
      .Set("gamma", QTD::ToText(gamma))
      .Set("debug.mode", QTD::ToText(mode))
      .Set("debug.output", QTD::ToText(output));
  for (const Forwarded& row : kAppliedByCommand)
    pass->Parameters().Set(row.target, parameters.GetString(row.parameter, row.missing));
  return 0;
}

uint32_t QGLIPColorCorrection::ResetParameters() {
  parameters.SetAll(kAfterReset);
  return 0;
}

uint32_t QGLIPColorCorrection::ResetByCommand(QTD::ARGUMENTS* args) {
  const bool apply = QTD::ArgumentView(args).GetInt("apply", "0") == 1;
  parameters.SetAll(kAfterResetByCommand);
  return apply ? ApplyArguments(nullptr) : 0;
}

uint32_t QGLIPColorCorrection::ExecuteCommand(const char* command) {
  const QTD::RMutexLock guard(lock);
  return Finish(CodeOf([&] {
    const std::string_view wanted = command ? command : "";
    if (wanted == "enable" || wanted == "disable") Enable(wanted == "enable");
    if (wanted == "params.apply") return Apply();
    if (wanted == "params.reset") return ResetParameters();
    return wanted == "readGPU" ? ReadBack() : 0;
  }));
}

uint32_t QGLIPColorCorrection::RunCommand(const char* command, QTD::ARGUMENTS* args) {
  const QTD::RMutexLock guard(lock);
  const auto done = [&](const auto& work) { return Finish(CodeOf(work)) == 0 ? 1u : 0u; };
  const std::string_view wanted = command ? command : "";
  if (wanted == "cmd.params.apply") return done([&] { return ApplyArguments(args); });
  if (wanted == "cmd.params.reset") return done([&] { return ResetByCommand(args); });
  if (wanted == "readGPU") return done([&] { return ReadBack(); });
  if (wanted == "cmd.enable") EnableByCommand(args);
  return 0;
}
