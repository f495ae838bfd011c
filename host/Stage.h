// What the library runs on: this machine, or a simulated notebook under it.
#pragma once

#include <memory>
#include <string>

#include "host/Exports.h"
#include "sim/Library.h"
#include "sim/Machine.h"

class Stage {
 public:
  /// Loads the library for use on this machine.
  /// @throws UnusableFile when the file cannot be loaded or is not the library
  static std::unique_ptr<Stage> OnThisMachine(const std::string& library_path);

  /// Loads the library on a simulated notebook that runs in real time.
  /// @param memory  the folder that takes the place of the notebook's temporary one and stays; ""
  /// for
  ///                one that goes with the notebook
  /// @throws UnusableFile, sim::MachineFileError
  static std::unique_ptr<Stage> OnNotebook(const std::string& library_path,
                                           const std::string& machine_file,
                                           const std::string& memory);

  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  const Exports& exports() const { return exports_; }

  /// The simulated notebook; null on this machine.
  sim::Machine* notebook() const { return notebook_.get(); }

 private:
  Stage() = default;

  std::unique_ptr<sim::Machine> notebook_;
  std::unique_ptr<sim::Library> simulated_library_;  // unloads before the notebook goes
  HMODULE module_ = nullptr;
  Exports exports_ = {};
};

/// Both sides of the library up, from construction to destruction. COM stands ready on the thread,
/// as the library expects of its host.
class LibrarySides {
 public:
  enum class Wanted { kQueries, kPopUpAndQueries };
  LibrarySides(const Exports& exports, Wanted wanted);
  ~LibrarySides();
  LibrarySides(const LibrarySides&) = delete;
  LibrarySides& operator=(const LibrarySides&) = delete;

  bool ready() const { return queries_ && (popup_ || wanted_ == Wanted::kQueries); }

 private:
  const Exports& exports_;
  Wanted wanted_;
  bool popup_ = false;
  bool queries_ = false;
};
