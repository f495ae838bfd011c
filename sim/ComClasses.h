// COM classes that only the simulation has, as COM itself knows them: each has a class object that
// this process registers, and an object is made by the real CoCreateInstance.
#pragma once

#include <vector>

#include "Common/Win.h"

struct IUnknown;

namespace sim {

/// create() makes an object as a class factory would; `contexts` are those in which the class can
/// be had, CLSCTX_ bits.
struct ComClass {
  CLSID id;
  HRESULT (*create)(REFIID interface_id, void** object);
  DWORD contexts = CLSCTX_ALL;
};

/// The class objects that are registered. The thread that registers the first one has COM from then
/// on, in an apartment of its own, and must be the one that ends this.
class ComRegistrations {
 public:
  ComRegistrations() = default;
  ~ComRegistrations();
  ComRegistrations(const ComRegistrations&) = delete;
  ComRegistrations& operator=(const ComRegistrations&) = delete;

  /// Has COM make an object of the class, whose class object is registered for it when it is not
  /// yet. @return what COM says
  HRESULT CreateInstance(const ComClass& com_class, IUnknown* outer, DWORD context,
                         REFIID interface_id, void** object);

 private:
  struct Registration {
    CLSID id;
    HRESULT (*create)(REFIID interface_id, void** object);
    DWORD cookie;
  };
  HRESULT Register(const ComClass& com_class);

  std::vector<Registration> registrations_;
  bool initialised_ = false;
};

}  // namespace sim
