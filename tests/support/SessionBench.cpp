#include "tests/support/SessionBench.h"

#include <cstdio>
#include <sstream>
#include <stdexcept>

namespace {

std::string Narrowed(const std::wstring& text) {
  return std::string(text.begin(), text.end());  // the folders of a machine are plain ASCII
}

void Put32(std::vector<unsigned char>* bytes, uint32_t value) {
  for (int shift = 0; shift != 32; shift += 8) {
    bytes->push_back(static_cast<unsigned char>(value >> shift));
  }
}

/// The lines of `text` that `keep` accepts.
template <typename Predicate>
std::string Filtered(const std::string& text, Predicate keep) {
  std::string kept;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (keep(line)) kept += line + "\n";
  }
  return kept;
}

bool StartsWith(const std::string& text, const char* start) { return text.rfind(start, 0) == 0; }

bool IsBackground(const sim::Drawn& drawn) { return drawn.file.compare(0, 3, "bg_") == 0; }

}  // namespace

std::wstring BuiltPictureFolder() {
  wchar_t path[1024] = {};
  GetModuleFileNameW(nullptr, path, 1024);
  const std::wstring text(path);
  return text.substr(0, text.find_last_of(L"\\/") + 1) + L"OstrelRes";
}

void WriteSolidPicture(const std::wstring& path, int32_t width, int32_t height, uint32_t colour) {
  const auto row = static_cast<uint32_t>((width * 3 + 3) / 4 * 4);
  const uint32_t size = row * static_cast<uint32_t>(height);
  std::vector<unsigned char> bytes = {'B', 'M'};
  Put32(&bytes, 54 + size);
  Put32(&bytes, 0);
  Put32(&bytes, 54);
  Put32(&bytes, 40);
  Put32(&bytes, static_cast<uint32_t>(width));
  Put32(&bytes, static_cast<uint32_t>(height));
  Put32(&bytes, 24U << 16 | 1U);  // one plane, 24 bits
  for (int i = 0; i != 6; ++i) Put32(&bytes, 0);
  for (int32_t y = 0; y != height; ++y) {
    std::vector<unsigned char> line;
    for (int32_t x = 0; x != width; ++x) {
      line.push_back(static_cast<unsigned char>(colour));
      line.push_back(static_cast<unsigned char>(colour >> 8));
      line.push_back(static_cast<unsigned char>(colour >> 16));
    }
    line.resize(row);
    bytes.insert(bytes.end(), line.begin(), line.end());
  }
  FILE* const file = _wfopen(path.c_str(), L"wb");
  if (file == nullptr) throw std::runtime_error("a picture cannot be written");
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

SessionBench::SessionBench(const std::string& text)
    : machine(text), script(std::make_shared<FakeScript>()) {
  machine.UsePictures(BuiltPictureFolder());
  script->connected = IMMonitor::MD_NB | IMMonitor::MD_CRT;
  script->connected_count = 2;
  // The lists that tests write out have no presentation items unless a test asks for them.
  machine.Config("PM:1024x768", "Support This Mode", 0);
}

SessionBench::~SessionBench() {
  script->on_call = nullptr;
  if (ostrel_) ostrel_->DeInit();
}

void SessionBench::Load() { ostrel_.emplace(machine, sim::Library::Build::kWhiteBox); }

BOOL SessionBench::Ready(IMMonitor* object, uint16_t vendor) {
  ostrel_->white_box().factory->InstallMonitor(object, vendor);
  const BOOL result = ostrel_->Init();
  if (result != 0) ostrel_->RegisterNotification(Receiver(), kMessage);
  init_calls = Calls();
  machine.TakeJournal();
  return result;
}

void SessionBench::LoseObject() {
  ostrel_->white_box().factory->RefuseIntelObjects();
  ostrel_->white_box().factory->InstallMonitor(nullptr, static_cast<uint16_t>(kVendorIntel));
}

std::string SessionBench::Items() {
  std::string text;
  for (const ItemState& item : State().items) {
    char line[80];
    std::snprintf(line, sizeof(line), "%u 0x%x icon %u", item.mode, item.displays, item.icon);
    text += line;
    if (item.presentation_type != 0) text += " type " + std::to_string(item.presentation_type);
    text += "\n";
  }
  return text;
}

std::string SessionBench::Flags() {
  std::string flags;
  for (const ItemState& item : State().items) flags += item.selected != 0 ? '1' : '0';
  return flags;
}

std::vector<std::string> SessionBench::ItemPictures() {
  std::vector<std::string> files;
  for (const sim::Drawn& drawn : machine.PopupDrawing()) {
    if (drawn.file == "selected.png") break;
    if (!IsBackground(drawn)) files.push_back(drawn.file);
  }
  return files;
}

std::string SessionBench::Highlight() {
  std::string text;
  for (const sim::Drawn& drawn : machine.PopupDrawing()) {
    if (text.empty() && drawn.file != "selected.png") continue;
    char line[128];
    std::snprintf(line, sizeof(line), "%s at %d,%d %dx%d\n", drawn.file.c_str(), drawn.x, drawn.y,
                  drawn.width, drawn.height);
    text += line;
  }
  return text;
}

std::string SessionBench::TakeNotifications() {
  std::string codes;
  const std::vector<sim::Notification>& all = machine.Notifications();
  for (; notifications_seen_ < all.size(); ++notifications_seen_) {
    const sim::Notification& one = all[notifications_seen_];
    const bool ours = one.receiver == Receiver() && one.message == kMessage && one.lparam == 0;
    codes += ours ? std::to_string(one.wparam) : "?";
  }
  return codes;
}

uint32_t SessionBench::PopupPeriod() {
  for (const sim::Machine::Timer& timer : machine.ArmedTimers()) {
    if (timer.window == machine.Popup() && timer.id == 1234) return timer.period;
  }
  return 0;
}

std::string SessionBench::Remembered(const std::string& section, const std::string& key) {
  char value[64] = {};
  const std::string path = Narrowed(machine.TempFolder()) + "\\Ostrel.ini";
  GetPrivateProfileStringA(section.c_str(), key.c_str(), "-", value, sizeof(value), path.c_str());
  return value;
}

void SessionBench::Remember(const std::string& section, const std::string& key,
                            const std::string& value) {
  const std::string path = Narrowed(machine.TempFolder()) + "\\Ostrel.ini";
  WritePrivateProfileStringA(section.c_str(), key.c_str(), value.c_str(), path.c_str());
}

std::string SessionBench::Calls() {
  return Filtered(script->TakeCalls(),
                  [](const std::string& line) { return line != "GetVgaVendor"; });
}

std::string SessionBench::Changes() {
  return Filtered(script->TakeCalls(), [](const std::string& line) {
    return StartsWith(line, "Set") || StartsWith(line, "Enable") || StartsWith(line, "ChangeTo");
  });
}

bool SessionBench::LogHas(const std::string& text) const {
  return machine.Log().find(text) != std::string::npos;
}

void SessionBench::SetCursorInPopup(int x, int y) {
  POINT point = {x, y};
  ClientToScreen(machine.Popup(), &point);
  machine.SetCursor(point.x, point.y);
}
