// What the white-box build of the library (the same objects, one export more) hands to the tests:
// tables of pointers to inner functions and makers of inner objects, one table a layer. Only that
// build links tests/whitebox/*.cpp.
#pragma once

#include "tests/whitebox/AmdBox.h"
#include "tests/whitebox/AtiBox.h"
#include "tests/whitebox/CoreBox.h"
#include "tests/whitebox/DisplayLinkBox.h"
#include "tests/whitebox/FactoryBox.h"
#include "tests/whitebox/FoundationBox.h"
#include "tests/whitebox/HybridBox.h"
#include "tests/whitebox/IdentityBox.h"
#include "tests/whitebox/IntelBox.h"
#include "tests/whitebox/LegacyBox.h"
#include "tests/whitebox/NvidiaBox.h"
#include "tests/whitebox/NvidiaPanelBox.h"
#include "tests/whitebox/PolicyBox.h"
#include "tests/whitebox/ProjectorBox.h"
#include "tests/whitebox/SessionBox.h"
#include "tests/whitebox/WorkaroundBox.h"

struct WhiteBox {
  const FoundationBox* foundation;
  const CoreBox* core;
  const FactoryBox* factory;
  const SessionBox* session;
  const IdentityBox* identity;
  const PolicyBox* policy;
  const ProjectorBox* projectors;
  const WorkaroundBox* workarounds;
  const IntelBox* intel;
  const NvidiaBox* nvidia;
  const HybridBox* hybrid;
  const NvidiaPanelBox* nvidia_panel;
  const AtiBox* ati;
  const AmdBox* amd;
  const LegacyBox* legacy;
  const DisplayLinkBox* display_link;
};

/// The white-box build's one export more, "Ostrel_WhiteBox".
using WhiteBoxExport = const WhiteBox* (*)();
