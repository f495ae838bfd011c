#include "tests/whitebox/HybridBox.h"

namespace {

void Present() {}

constexpr HybridBox kBox = {Present};

}  // namespace

const HybridBox* GetHybridBox() { return &kBox; }
