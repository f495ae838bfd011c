#include "tests/whitebox/WhiteBox.h"

extern "C" __declspec(dllexport) const WhiteBox* Ostrel_WhiteBox() {
  static const WhiteBox box = {
      GetFoundationBox(), GetCoreBox(),   GetFactoryBox(),   GetSessionBox(),
      GetIdentityBox(),   GetPolicyBox(), GetProjectorBox(), GetWorkaroundBox(),
      GetIntelBox(),      GetNvidiaBox(), GetHybridBox(),    GetNvidiaPanelBox(),
      GetAtiBox(),        GetAmdBox(),    GetLegacyBox(),    GetDisplayLinkBox()};
  return &box;
}
