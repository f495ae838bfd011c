// The reference host: loads the library as a hotkey suite would, presses the display hotkey, asks
// and tells it everything it exports, on this machine or on a simulated notebook.

#include <cstdio>
#include <functional>
#include <memory>

#include <CLI/CLI.hpp>

#include "Common/Text.h"
#include "host/Commands.h"
#include "host/EdidCommand.h"
#include "host/Press.h"
#include "host/Words.h"
#include "sim/Failure.h"

namespace {

struct Options {
  std::string library;
  std::string machine;
  std::string memory;
  bool json = false;
  std::string mode;
  std::vector<std::string> displays;
  std::string on_or_off;
  std::string hotkey = "win+p";
  PressPlan plan;
  bool read_edids = false;
  std::vector<std::string> edid_files;
};

using Command = std::function<int(Stage&, Report&)>;

std::string CheckMode(const std::string& text) {
  return ParseMode(text) ? "" : "'" + text + "' is no mode";
}

std::string CheckDisplay(const std::string& text) {
  return ParseDisplays(text) ? "" : "'" + text + "' is no display";
}

std::string CheckKey(const std::string& text) {
  return KeyFromWord(text) != 0 ? "" : "'" + text + "' is no key (left right up down enter esc)";
}

uint32_t MaskOf(const std::vector<std::string>& words) {
  uint32_t mask = 0;
  for (const std::string& word : words) mask |= *ParseDisplays(word);
  return mask;
}

void AddQueries(CLI::App& app, Command* chosen) {
  const auto add = [&app, chosen](const char* name, const char* help, int (*run)(Stage&, Report&)) {
    app.add_subcommand(name, help)->callback([chosen, run] { *chosen = run; });
  };
  add("connected", "the displays that are plugged in", ShowConnected);
  add("active", "the displays that show a desktop", ShowActive);
  add("mode", "the current mode", ShowMode);
  add("vendor", "the graphics vendor", ShowVendor);
  add("capability", "what the machine can do", ShowCapability);
  add("panel-only", "switch to the notebook's panel alone", SetPanelOnly);
  add("flush", "forget the remembered settings", FlushSettings);
}

void AddChanges(CLI::App& app, Options* options, Command* chosen) {
  CLI::App* set = app.add_subcommand("set", "switch to a mode on some displays");
  set->add_option("mode", options->mode, "single clone extend hspan vspan, or a number")
      ->required()
      ->check(CheckMode);
  set->add_option("displays", options->displays, "panel crt tv dvi, or a mask")
      ->check(CheckDisplay);
  set->callback([options, chosen] {
    *chosen = [options](Stage& stage, Report& report) {
      return SetMode(stage, report, *ParseMode(options->mode), MaskOf(options->displays));
    };
  });

  CLI::App* extend = app.add_subcommand("extend", "turn the extended desktop on or off");
  extend->add_option("state", options->on_or_off, "on or off")
      ->required()
      ->check(CLI::IsMember({"on", "off"}));
  extend->callback([options, chosen] {
    *chosen = [options](Stage& stage, Report& report) {
      return SetExtended(stage, report, options->on_or_off == "on");
    };
  });
}

void AddPresses(CLI::App& app, Options* options, Command* chosen) {
  CLI::App* press = app.add_subcommand("press", "press the display hotkey");
  PressPlan* plan = &options->plan;
  press->add_option("--times", plan->times, "how often")->check(CLI::Range(1, 1000));
  press->add_option("--keys", plan->keys, "then these keys: left right up down enter esc")
      ->check(CheckKey)
      ->delimiter(',');
  press->add_option("--interval", plan->interval, "milliseconds from one to the next")
      ->check(CLI::Range(1, 60000));
  press->add_option("--expect", plan->expected,
                    "how the machine is to end, such as \"clone internal+crt\", on a simulated "
                    "notebook with the desktop's size behind it if wanted; else exit code 1");
  press->callback([options, chosen] {
    *chosen = [options](Stage& stage, Report& report) {
      return Press(stage, report, options->plan);
    };
  });

  CLI::App* listen = app.add_subcommand("listen", "wait for the hotkey until Ctrl+C");
  listen->add_option("--hotkey", options->hotkey, "such as win+p or ctrl+alt+f7");
  listen->callback([options, chosen] {
    *chosen = [options](Stage& stage, Report& report) {
      return Listen(stage, report, options->hotkey);
    };
  });
}

void AddEdid(CLI::App& app, Options* options) {
  CLI::App* edid = app.add_subcommand("edid", "tell what the library makes of a monitor's EDID");
  edid->footer(kEdidHelp);
  edid->allow_windows_style_options(false);  // a path may begin with a slash
  edid->add_option("files", options->edid_files, "the EDIDs");
  for (const char* option : {"--library", "--machine", "--memory", "--json"}) {
    edid->excludes(app.get_option(option));
  }
  edid->callback([options] { options->read_edids = true; });
}

/// What the simulated notebook found wrong with the library: an unlisted call, a leak at unload.
bool g_simulator_complained = false;

void OnSimulatorFailure(const std::string& text) {
  g_simulator_complained = true;
  std::fprintf(stderr, "ostrel-host: the simulated notebook: %s\n", text.c_str());
}

int Execute(const Options& options, const Command& command) {
  sim::SetFailureSink(&OnSimulatorFailure);
  std::unique_ptr<Stage> stage =
      options.machine.empty() ? Stage::OnThisMachine(options.library)
                              : Stage::OnNotebook(options.library, options.machine, options.memory);
  Report report(options.json);
  if (!options.machine.empty()) {
    report.Fact("Notebook", options.machine, "machine", options.machine);
  }
  const int exit_code = command(*stage, report);
  report.Finish();
  stage.reset();  // unloads the library, which may still have something to answer for
  if (exit_code == kExitDone && g_simulator_complained) return kExitFailed;
  return exit_code;
}

/// As UTF-8, program name included: the narrow ones lack what the code page lacks.
std::vector<std::string> NarrowArguments(int count, wchar_t** arguments) {
  std::vector<std::string> narrow;
  narrow.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) narrow.push_back(NarrowFromWide(arguments[i]));
  return narrow;
}

void Parse(CLI::App& app, const std::vector<std::string>& arguments) {
  std::vector<const char*> pointers;
  pointers.reserve(arguments.size());
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  app.parse(static_cast<int>(pointers.size()), pointers.data());
}

std::string OneLine(const CLI::App* /*app*/, const CLI::Error& error) {
  return std::string("ostrel-host: ") + error.what() + "\n";
}

}  // namespace

extern "C" int wmain(int argc, wchar_t** argv) {
  CLI::App app("The reference host of the Ostrel display-switch library", "ostrel-host");
  Options options;
  Command command;
  app.add_option("--library", options.library, "the DLL; default: Ostrel.dll beside this program");
  app.add_option("--machine", options.machine, "a simulated notebook (TOML) to run on");
  app.add_option("--memory", options.memory,
                 "a folder where the simulated notebook remembers settings from call to call");
  app.add_flag("--json", options.json, "one JSON document instead of lines");
  app.require_subcommand(1);
  app.fallthrough();
  app.failure_message(OneLine);
  AddQueries(app, &command);
  AddChanges(app, &options, &command);
  AddPresses(app, &options, &command);
  AddEdid(app, &options);

  try {
    Parse(app, NarrowArguments(argc, argv));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kExitDone : kExitUsage;
  }
  try {
    if (options.read_edids) return ShowEdids(options.edid_files);
    return Execute(options, command);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ostrel-host: %s\n", error.what());
    return kExitUsage;
  }
}
