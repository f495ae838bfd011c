#include "host/Stage.h"

#include <objbase.h>

#include <cstdlib>

#include "Common/Text.h"
#include "sim/TempFolder.h"

namespace {

std::string FolderOfHost() {
  wchar_t path[MAX_PATH] = {};
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  const std::string text = NarrowFromWide(path);
  return text.substr(0, text.find_last_of('\\') + 1);
}

std::string LibraryFile(const std::string& given) {
  return given.empty() ? FolderOfHost() + "Ostrel.dll" : given;
}

}  // namespace

std::unique_ptr<Stage> Stage::OnThisMachine(const std::string& library_path) {
  const std::string file = LibraryFile(library_path);
  std::unique_ptr<Stage> stage(new Stage);
  stage->module_ = LoadLibraryW(WideFromNarrow(file).c_str());
  if (stage->module_ == nullptr) {
    throw UnusableFile("cannot load " + file + ": error " + std::to_string(GetLastError()));
  }
  stage->exports_ = Exports::Bind(stage->module_, file);
  return stage;
}

std::unique_ptr<Stage> Stage::OnNotebook(const std::string& library_path,
                                         const std::string& machine_file,
                                         const std::string& memory) {
  const std::string file = LibraryFile(library_path);
  // Through the run-time library, which answers from a copy of the environment.
  _wputenv_s(L"OSTREL_DLL", WideFromNarrow(file).c_str());
  std::unique_ptr<Stage> stage(new Stage);
  stage->notebook_ = sim::Machine::FromFile(machine_file);
  stage->notebook_->UseRealTime();
  if (!memory.empty()) sim::KeepTempFolder(*stage->notebook_, WideFromNarrow(memory));
  stage->notebook_->UsePictures(WideFromNarrow(FolderOfHost() + "OstrelRes"));
  try {
    stage->simulated_library_ = std::make_unique<sim::Library>(*stage->notebook_);
  } catch (const std::runtime_error& error) {
    throw UnusableFile("cannot load " + file + ": " + error.what());
  }
  stage->exports_ = Exports::Bind(stage->simulated_library_->module(), file);
  return stage;
}

Stage::~Stage() {
  if (module_ != nullptr) FreeLibrary(module_);
}

LibrarySides::LibrarySides(const Exports& exports, Wanted wanted)
    : exports_(exports), wanted_(wanted) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  // The query side ends with a CoUninitialize of its own, also when it fails to start; this one is
  // for it.
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  if (wanted_ == Wanted::kPopUpAndQueries) popup_ = exports_.Init() != 0;
  queries_ = exports_.InitExtendMode() != 0;
}

LibrarySides::~LibrarySides() {
  // A query side that failed to start took its CoUninitialize along, unless the pop-up side was up.
  const bool library_leaves_com = !queries_ && popup_;
  if (popup_) exports_.DeInit();
  if (queries_) exports_.DeInitExtendMode();
  if (library_leaves_com) CoUninitialize();
  CoUninitialize();
}
