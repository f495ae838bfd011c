// A SiS or a VIA object on a simulated notebook, and what it did told in short lines.
#pragma once

#include "sim/faces/SisDriver.h"
#include "sim/faces/ViaDriver.h"
#include "tests/behaviour/CoreHost.h"

constexpr uint32_t kUntouched = 0xEEEE;

/// An object of the test's, and the questions that all back-ends answer.
class LegacyHost : public CoreHost {
 public:
  const LegacyBox& box() { return *ostrel().white_box().legacy; }
  sim::Model& model() { return machine.model(); }

  /// "0x3 (2)"; "failed", and what was written all the same.
  std::string Connected() { return Report(&IMMonitor::GetConnectedDisplays); }
  std::string Active() { return Report(&IMMonitor::GetActiveDisplays); }
  /// "2 0x3", with "failed " in front.
  std::string Mode() {
    uint32_t mode = kUntouched;
    uint32_t displays = kUntouched;
    const BOOL known = object().GetCurrentDisplayMode(&mode, &displays);
    return (known == 1 ? "" : "failed ") + Number(mode) + " " + Hex(displays);
  }
  /// SetNewDisplayMode: what was sent, and the result.
  std::string Switch(uint32_t mode, uint32_t displays) {
    IMMonitor& monitor = object();
    machine.TakeJournal();
    const BOOL result = monitor.SetNewDisplayMode(mode, displays);
    return machine.TakeJournal() + std::to_string(result);
  }
  /// Every pointer of the three reports null in turn: nobody is asked, and nothing is written.
  void ExpectNullPointersToFail(const char* function) {
    const uint32_t calls = machine.Calls(function);
    uint32_t out = kUntouched;
    for (const auto report : {&IMMonitor::GetConnectedDisplays, &IMMonitor::GetActiveDisplays,
                              &IMMonitor::GetCurrentDisplayMode}) {
      EXPECT_EQ((object().*report)(nullptr, &out), 0);
      EXPECT_EQ((object().*report)(&out, nullptr), 0);
      EXPECT_EQ((object().*report)(nullptr, nullptr), 0);
    }
    EXPECT_EQ(out, kUntouched);
    EXPECT_EQ(machine.Calls(function), calls);
  }
  void Forget() {
    machine.TakeJournal();
    ForgetLog();
  }

  static std::string Hex(uint32_t value) {
    char text[16];
    snprintf(text, sizeof(text), "0x%x", value);
    return value == kUntouched ? "-" : text;
  }

 protected:
  // Checks are on and verbose lines, too: neither back-end has any.
  explicit LegacyHost(const std::string& text) : CoreHost(text, L"--enable-dcheck --v=2") {}
  ~LegacyHost() = default;
  LegacyHost(const LegacyHost&) = delete;
  LegacyHost& operator=(const LegacyHost&) = delete;

  virtual IMMonitor& object() = 0;

  static std::string Number(uint32_t value) {
    return value == kUntouched ? "-" : std::to_string(value);
  }

 private:
  std::string Report(BOOL (IMMonitor::*report)(uint32_t*, uint32_t*)) {
    uint32_t displays = kUntouched;
    uint32_t count = kUntouched;
    const BOOL known = (object().*report)(&displays, &count);
    EXPECT_TRUE(known == 0 || known == 1);
    return (known ? "" : "failed ") + Hex(displays) + " (" + Number(count) + ")";
  }
};

constexpr char kSisPanelCrt[] = "xp sis: internal 1280x800 active, crt 1280x1024";

class SisHost : public LegacyHost {
 public:
  explicit SisHost(const std::string& text = kSisPanelCrt) : LegacyHost(text) {}
  ~SisHost() { End(); }

  /// The object, made at the first call and initialised.
  IMMonitor& sis() {
    if (!initialised_) {
      initialised_ = true;
      EXPECT_EQ(bare().Initial(), 1);
    }
    return *object_;
  }
  /// The same without Initial.
  IMMonitor& bare() {
    if (object_ == nullptr) object_.reset(box().NewSisMMImpl());
    return *object_;
  }
  /// Ends it; the next question makes another one.
  void End() {
    object_.reset();
    initialised_ = false;
  }

  // --- SisDispInfo.ini.

  std::wstring Path() const { return machine.HostFolder() + L"\\SisDispInfo.ini"; }
  std::string NarrowPath() const { return sim::Narrow(Path()); }
  void Put(const std::string& bytes) {
    WriteFileText(Path(), bytes);
    ForgetFile();
  }
  /// "" when there is none.
  std::string Bytes() {
    ForgetFile();
    return ReadFileText(Path());
  }
  /// The memos as an object that is ready writes them into no file.
  std::string Kept() {
    sis();
    ForgetFile();
    DeleteFileW(Path().c_str());
    End();
    return Bytes();
  }

 protected:
  IMMonitor& object() override { return sis(); }

 private:
  // Windows keeps profile files in a cache; three nulls write it out and drop it.
  void ForgetFile() { WritePrivateProfileStringW(nullptr, nullptr, nullptr, Path().c_str()); }

  std::unique_ptr<IMMonitor> object_;
  bool initialised_ = false;
};

/// The four values and the dirty key of a display ("LCD", "CRT"), in the order of writing.
inline std::string SisKeys(const std::string& display, uint32_t width, uint32_t height,
                           uint32_t depth, uint32_t frequency, uint32_t dirty = 1) {
  return display + " Width=" + std::to_string(width) + "\r\n" +          //
         display + " Height=" + std::to_string(height) + "\r\n" +        //
         display + " Color Depth=" + std::to_string(depth) + "\r\n" +    //
         display + " Frequency=" + std::to_string(frequency) + "\r\n" +  //
         display + " Dirty=" + std::to_string(dirty) + "\r\n";
}

/// The memos of the two sections, in the order of the file.
enum SisMemo : uint32_t { kSingleLcd = 1, kSingleCrt = 2, kCloneLcd = 4, kCloneCrt = 8 };

/// A memo with numbers of its own, as keys and as a record: "101x102x103@104".
inline std::string NumberedSisKeys(const std::string& display, uint32_t memo) {
  const uint32_t n = 100 * memo;
  return SisKeys(display, n + 1, n + 2, n + 3, n + 4);
}
inline std::string NumberedSisRecord(uint32_t device, uint32_t memo) {
  const std::string n = std::to_string(memo);
  return "[" + std::to_string(device) + " " + n + "01x" + n + "02x" + n + "03@" + n + "04]";
}

/// A file in which these memos are known.
inline std::string SisFile(uint32_t memos) {
  std::string single;
  std::string clone;
  if ((memos & kSingleLcd) != 0) single += NumberedSisKeys("LCD", kSingleLcd);
  if ((memos & kSingleCrt) != 0) single += NumberedSisKeys("CRT", kSingleCrt);
  if ((memos & kCloneLcd) != 0) clone += NumberedSisKeys("LCD", kCloneLcd);
  if ((memos & kCloneCrt) != 0) clone += NumberedSisKeys("CRT", kCloneCrt);
  return (single.empty() ? "" : "[Single Mode]\r\n" + single) +
         (clone.empty() ? "" : "[Clone Mode]\r\n" + clone);
}
constexpr uint32_t kAllSisMemos = 15;

constexpr char kViaPanelCrt[] = "xp via: internal 1280x800 active, crt 1280x1024, dvi 1280x1024";

class ViaHost : public LegacyHost {
 public:
  explicit ViaHost(const std::string& text = kViaPanelCrt) : LegacyHost(text) {}
  ~ViaHost() { End(); }

  /// The object, made at the first call.
  IMMonitor& via() {
    if (object_ == nullptr) object_.reset(box().NewViaMMImpl(&raised_));
    if (object_ == nullptr) throw std::runtime_error("raised: " + raised_);
    return *object_;
  }
  /// What making one raises; "" when it stands.
  std::string Raised() {
    std::string raised;
    object_.reset(box().NewViaMMImpl(&raised));
    EXPECT_EQ(object_ == nullptr, !raised.empty());
    return raised;
  }
  void End() { object_.reset(); }
  size_t Contexts() const { return CountOf(machine.Outstanding(), "DC "); }

 protected:
  IMMonitor& object() override { return via(); }

 private:
  std::unique_ptr<IMMonitor> object_;
  std::string raised_;
};
