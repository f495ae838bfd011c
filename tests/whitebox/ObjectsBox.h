// A library that cannot make its display objects.
#pragma once

struct ObjectsBox {
  /// From now on, until the library is unloaded, no Intel object can be had: the factory gets null.
  void (*RefuseIntelObjects)();
};

const ObjectsBox* GetObjectsBox();
