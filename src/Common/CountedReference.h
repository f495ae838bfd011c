// A reference on an object that counts them, for as long as it is in scope.
#pragma once

/// Takes a reference when it is made and gives it back at its end, which may end the object. Null
/// is allowed and holds nothing.
template <typename Counted>
class CountedReference {
 public:
  explicit CountedReference(Counted* object) : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  ~CountedReference() {
    if (object_ != nullptr) object_->Release();
  }
  CountedReference(const CountedReference&) = delete;
  CountedReference& operator=(const CountedReference&) = delete;

  Counted* get() const { return object_; }
  Counted* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

 private:
  Counted* const object_;
};
