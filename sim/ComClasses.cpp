#include "sim/ComClasses.h"

#include <objbase.h>

#include <algorithm>

namespace sim {
namespace {

using Creator = HRESULT (*)(REFIID interface_id, void** object);

// What COM holds for a class. Deletes itself with the last reference.
class ClassObject final : public IClassFactory {
 public:
  explicit ClassObject(Creator create) : create_(create) {}
  virtual ~ClassObject() = default;
  ClassObject(const ClassObject&) = delete;
  ClassObject& operator=(const ClassObject&) = delete;

  HRESULT WINAPI QueryInterface(REFIID interface_id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    const bool known = IsEqualIID(interface_id, IID_IUnknown) != 0 ||
                       IsEqualIID(interface_id, IID_IClassFactory) != 0;
    if (!known) return E_NOINTERFACE;
    AddRef();
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  ULONG WINAPI AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&references_)); }
  ULONG WINAPI Release() override {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }
  HRESULT WINAPI CreateInstance(IUnknown* outer, REFIID interface_id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    return outer != nullptr ? CLASS_E_NOAGGREGATION : create_(interface_id, object);
  }
  HRESULT WINAPI LockServer(BOOL) override { return S_OK; }

 private:
  const Creator create_;
  LONG references_ = 1;
};

}  // namespace

ComRegistrations::~ComRegistrations() {
  for (const Registration& registration : registrations_) CoRevokeClassObject(registration.cookie);
  if (initialised_) CoUninitialize();
}

HRESULT ComRegistrations::Register(const ComClass& com_class) {
  const auto found = std::find_if(
      registrations_.begin(), registrations_.end(),
      [&com_class](const Registration& r) { return IsEqualCLSID(r.id, com_class.id) != 0; });
  if (found != registrations_.end()) {
    if (found->create == com_class.create) return S_OK;
    // Another maker stands for the class now.
    CoRevokeClassObject(found->cookie);
    registrations_.erase(found);
  }
  if (!initialised_) initialised_ = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
  auto* const class_object = new ClassObject(com_class.create);
  DWORD cookie = 0;
  // Within the process only: a local server listens under the name of its class, which all
  // processes of a desktop share, and tests that run side by side would answer each other.
  const HRESULT result = CoRegisterClassObject(com_class.id, class_object, CLSCTX_INPROC_SERVER,
                                               REGCLS_MULTIPLEUSE, &cookie);
  class_object->Release();  // COM has its own reference
  if (SUCCEEDED(result)) registrations_.push_back({com_class.id, com_class.create, cookie});
  return result;
}

HRESULT ComRegistrations::CreateInstance(const ComClass& com_class, IUnknown* outer, DWORD context,
                                         REFIID interface_id, void** object) {
  if ((com_class.contexts & context) == 0) return REGDB_E_CLASSNOTREG;
  const HRESULT result = Register(com_class);
  if (FAILED(result)) return result;
  return CoCreateInstance(com_class.id, outer, CLSCTX_INPROC_SERVER, interface_id, object);
}

}  // namespace sim
