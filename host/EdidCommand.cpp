#include "host/EdidCommand.h"

#include <cstdio>

#include "Common/MultiMonitor/Edid.h"
#include "host/Commands.h"
#include "host/EdidInput.h"

namespace {

// A name is whatever the monitor sends; the line it stands in is one line of columns.
std::string Printable(const std::string& text) {
  std::string printable;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7F && byte != '\\') {
      printable += c;
      continue;
    }
    char escape[8];
    std::snprintf(escape, sizeof(escape), "\\x%02X", static_cast<unsigned>(byte));
    printable += escape;
  }
  return printable;
}

std::string LoadResult(const std::vector<uint8_t>& bytes, EDID* edid) {
  try {
    const auto size = static_cast<uint32_t>(bytes.size());
    return edid->Load(bytes.data(), size) != 0 ? "loaded" : "too short";
  } catch (const invalid_edid_header&) {
    return "bad header";
  } catch (const invalid_edid_checksum&) {
    return "bad checksum";
  }
}

void ShowLine(const std::string& file, const EdidFacts& facts) {
  std::printf("%s\t%s\t%s\t%s\t%s\t%s\t%s\n", file.c_str(), facts.load.c_str(), facts.name.c_str(),
              facts.width.c_str(), facts.height.c_str(), facts.refresh.c_str(),
              facts.preferred.c_str());
  std::fflush(stdout);  // in the order of the files, complaints between them
}

}  // namespace

const char kEdidHelp[] =
    "Each file holds one EDID: its bytes, or their hexadecimal text (white space and commas\n"
    "between, with or without 0x). No file, or \"-\", is standard input.\n\n"
    "One line a file, tab-separated: file, result (loaded, too short, bad header, bad checksum),\n"
    "name, width, height and refresh rate of the first detailed timing, and 1 if the monitor\n"
    "calls that timing its preferred one, else 0. What is not known is empty. A damaged EDID is\n"
    "a result; its monitor is called \"Unknown Mnt\" by the library.\n\n"
    "A file that cannot be read, or is neither, is one line on standard error, the others are\n"
    "told all the same, and the exit code is 1.";

EdidFacts DescribeEdid(const std::vector<uint8_t>& bytes) {
  EdidFacts facts;
  EDID edid;
  facts.load = LoadResult(bytes, &edid);
  if (edid.m_valid == 0) {
    if (facts.load != "too short") facts.name = kUnknownMonitorName;
    return facts;
  }
  std::string name;
  if (edid.FindName(&name)) facts.name = Printable(name);
  facts.preferred = edid.HasPreferredTiming() ? "1" : "0";
  EdidTiming timing;
  if (edid.GetDetailedTiming(&timing) == 0) return facts;
  facts.width = std::to_string(timing.width);
  facts.height = std::to_string(timing.height);
  facts.refresh = std::to_string(timing.refresh);
  return facts;
}

int ShowEdids(const std::vector<std::string>& files) {
  int exit_code = kExitDone;
  for (const std::string& file : files.empty() ? std::vector<std::string>{"-"} : files) {
    try {
      ShowLine(file, DescribeEdid(ReadEdidFile(file)));
    } catch (const UnreadableEdid& error) {
      std::fprintf(stderr, "ostrel-host: %s: %s\n", file.c_str(), error.what());
      exit_code = kExitFailed;
    }
  }
  return exit_code;
}
