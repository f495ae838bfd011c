// Machines as files: machines/*.toml.
#pragma once

#include <string>

#include "sim/Model.h"

namespace sim {

// The fields of a machine file. Those without a default must be there; a field that is not listed
// is an error.
//
//   name = "Lakeside 14"                # for people; optional
//
//   [windows]
//   version = "win7"                    # win10 win8 win7 win7starter vista 2008 2008r2 2003 xp; or
//   leave it out and major = 6                           #   give these: major, minor, build,
//   product_type (1 workstation, 3 server) minor = 1 build = 7601 product_type = 1 product = 48 #
//   what GetProductInfo answers; with "major" the default is no such entry service_pack = "Service
//   Pack 1"     # default: what the version has, else ""
//
//   [[adapter]]                         # one or more, in the order of Windows' device lists
//   kind = "intel"                      # intel nvidia amd sis via none: name and hardware id; or
//   leave it out and give name = "Intel(R) HD Graphics"       #   these two hardware_id =
//   'PCI\VEN_8086&DEV_0166&SUBSYS_397717AA&REV_09' hardware_id_readable = true         # these are
//   the defaults enumerated = true                   # stands among the present devices disabled =
//   false                    # problem 22 problem = 0                         # another problem
//   number root_enumerated = false status_readable = true mirroring = false sources = 2 # desktops
//   it can scan out heads = 0                           # displays it can drive at a time; 0: as
//   many as sources
//
//   [[connector]]
//   id = "internal"                     # internal crt tv dvi hdmi dp edp other wireless, with a
//   digit for a second one adapter = 0                         # index of the [[adapter]]; default
//   0 technology = 0                      # DISPLAYCONFIG_VIDEO_OUTPUT_TECHNOLOGY; default by the
//   id target_id = 256                     # default: 256, 512, ... per adapter
//
//   [connector.monitor]                 # leave it out: nothing is plugged in
//   name = "LP140WH2"                   # also in the EDID
//   native = "1366x768@60"              # "<W>x<H>", "<W>x<H>@<Hz>"; 60 Hz by default
//   modes = ["800x600", "1024x768x16@75"]   # "<W>x<H>[x<bits>][@<Hz>]": without bits a mode at 16
//   and one at 32;
//                                       #   default: the usual sizes up to the native one, which is
//                                       always listed
//   edid = true                         # false: it sends none; or 256 hexadecimal digits: these
//   bytes
//
//   [topology]
//   kind = "single"                     # none single clone extend
//   connectors = ["internal"]           # from left to right; the first is the primary display
//
//   [[process]]                         # default: a few that every Windows runs
//   id = 1200
//   executable = "explorer.exe"
//
//   [registry.'HKLM\SOFTWARE\Some\Key'] # values by name: text (REG_SZ) or number (REG_DWORD)
//   Value = "text"
//
//   [sound]
//   wave_out_devices = 1
//
//   [config."Settings"]                 # keys for Ostrel.cfg, by section: text or number
//   "Prefer Windows 7 CCD API" = 1

/// @throws MachineFileError "<path>, line <n>, field \"<field>\": <what is wrong>"
Model LoadMachineFile(const std::string& path);
/// The same for text that is at hand; `path` is for the messages only.
Model ParseMachineText(const std::string& text, const std::string& path);

}  // namespace sim
