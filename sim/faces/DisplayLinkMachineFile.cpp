// What a machine file says of DisplayLink's software and its displays.
#include "sim/MachineFields.h"
#include "sim/faces/DisplayLink.h"

namespace sim {

void ReadDisplayLink(Fields* file, Model* model) {
  const toml::node* const node = file->Find("displaylink");
  if (node == nullptr) return;
  Fields fields = file->Table("displaylink", *node);
  DisplayLinkSoftware& software = model->displaylink;
  software.library = fields.TruthOr("library", true);
  software.working = fields.TruthOr("working", software.working);
  software.file = fields.TextOr("file", software.file);
  if (software.file.empty()) fields.Raise("file", "a path is needed");
  fields.RefuseTheRest();
}

NivoOutput ReadNivoOutput(Fields* connector) {
  NivoOutput nivo;
  nivo.handle = connector->NumberOr("usb_handle", 0);
  nivo.execution_state = connector->NumberOr("usb_state", nivo.execution_state);
  nivo.product = connector->NumberOr("usb_product", nivo.product);
  return nivo;
}

}  // namespace sim
