#pragma once

#include <memory>
#include <utility>

namespace Quarnel {

/// A reusable object of T, and the only memory that a thread keeps between calls: the workspace
/// uses it for its lifetime and then returns it for the thread's next workspace. Two workspaces in
/// use at a time have separate objects, so that no call overwrites data that another still reads.
/// The object is in the state left by its last user.
///
/// Constructing objects anew instead costs 18 % more instructions for the path fingerprint of a
/// drug-like molecule, read from SMILES, 20 % for Lingo and 66 % for MACCS keys.
template <class T>
class Workspace {
 public:
  Workspace() {
    if (!isThreadEnding_) object_ = std::move(Spare());
    if (!object_) object_ = std::make_unique<T>();
  }
  ~Workspace() {
    if (!isThreadEnding_) Spare() = std::move(object_);
  }
  Workspace(const Workspace&) = delete;
  Workspace& operator=(const Workspace&) = delete;

  T& operator*() const { return *object_; }
  T* operator->() const { return object_.get(); }

 private:
  static std::unique_ptr<T>& Spare() {
    struct Store {
      ~Store() { isThreadEnding_ = true; }
      std::unique_ptr<T> object;
    };
    thread_local Store store;
    return store.object;
  }

  // Destructors of static objects may still call the library after the thread's own are destroyed.
  static inline thread_local bool isThreadEnding_ = false;
  std::unique_ptr<T> object_;
};

}  // namespace Quarnel
