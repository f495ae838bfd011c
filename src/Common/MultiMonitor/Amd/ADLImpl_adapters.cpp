// Which adapters the library lists, and which of them is in charge.
#include "Common/Logging.h"
#include "Common/MultiMonitor/Amd/ADLImpl.h"

#include <algorithm>
#include <limits>
#include <new>

namespace {

// The library is told the size of the array in bytes, as a signed number.
constexpr int kMostAdapters =
    std::numeric_limits<int>::max() / static_cast<int>(sizeof(ADLAdapterInfo));

ADLAdapterInfo* NewAdapterInfos(int count) {
  if (count > kMostAdapters) return nullptr;
  return new (std::nothrow) ADLAdapterInfo[static_cast<size_t>(count)]();
}

}  // namespace

int ADLImpl::ListedAdapters() const {
  return m_infoAdapters != nullptr ? std::min(m_numAdapters, m_infoAdaptersLength) : 0;
}

bool ADLImpl::RefreshAdapters() {
  int count = 0;
  int rv = VADLLib::Call(m_adl->ADL_Adapter_NumberOfAdapters_Get, &count);
  if (rv == ADL_OK) m_numAdapters = count;
  if (rv != ADL_OK || count <= 0) return false;

  m_infoAdaptersLength = 0;
  m_infoAdapters.reset();
  m_infoAdapters.reset(NewAdapterInfos(count));
  DCHECK(m_infoAdapters != NULL);
  if (m_infoAdapters == nullptr) return false;

  const int size = count * static_cast<int>(sizeof(ADLAdapterInfo));
  rv = VADLLib::Call(m_adl->ADL_Adapter_AdapterInfo_Get, m_infoAdapters.get(), size);
  if (rv != ADL_OK) {
    LOG(ERROR) << "Call to ADL_Adapter_AdapterInfo_Get() failed, rv = " << rv;
    m_infoAdapters.reset();
    return false;
  }
  m_infoAdaptersLength = count;
  return FindActiveAdapter();
}

bool ADLImpl::FindActiveAdapter() {
  for (int position = 0; position < m_numAdapters; ++position) {
    int status = 0;
    // Deliberate: the position in the list, not the index that the record there tells.
    const int rv = VADLLib::Call(m_adl->ADL_Adapter_Active_Get, position, &status);
    if (rv != ADL_OK) {
      LOG(WARNING) << "Call to ADL_Adapter_Active_Get() failed, rv = " << rv;
    } else if (status == ADL_TRUE) {
      m_activeAdapter = position;
      LOG(INFO) << "Active adapter index for AMD display: " << position;
      return true;
    }
  }
  LOG(ERROR) << "Can't recognize active adapter index";
  return false;
}
