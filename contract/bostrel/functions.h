#pragma once

/// Base classes of function objects that can be copied without knowledge of their class.

#include <memory>
#include <type_traits>
#include <utility>

namespace Bostrel {

/// A condition on an object.
template <class T>
class ZQUnaryPredicate {
 public:
  virtual ~ZQUnaryPredicate() = default;
  virtual bool operator()(const T& item) const = 0;
  /// Returns a new object of the same class, owned by the caller.
  virtual ZQUnaryPredicate* CreateCopy() const = 0;
};

/// Owns an object of an unknown class; a copy owns a copy. May be null.
template <class T>
class ZQCopyPtr {
 public:
  ZQCopyPtr() = default;
  explicit ZQCopyPtr(T* owned) : pointer_(owned) {}
  ZQCopyPtr(const ZQCopyPtr& other) : pointer_(other ? other->CreateCopy() : nullptr) {}
  ZQCopyPtr(ZQCopyPtr&&) noexcept = default;
  ZQCopyPtr& operator=(ZQCopyPtr other) noexcept {
    pointer_ = std::move(other.pointer_);
    return *this;
  }
  ~ZQCopyPtr() = default;

  explicit operator bool() const { return pointer_ != nullptr; }
  T& operator*() const { return *pointer_; }
  T* operator->() const { return pointer_.get(); }

 private:
  std::unique_ptr<T> pointer_;
};

/// The negation of a condition, of which it holds a copy: `ZQNot(ZQIsHydrogen())`.
/// `ZQNot(ZQNot(p))` is a copy of `ZQNot(p)`, as with any class whose arguments are deduced.
template <class T>
class ZQNot final : public ZQUnaryPredicate<T> {
 public:
  explicit ZQNot(const ZQUnaryPredicate<T>& predicate) : predicate_(predicate.CreateCopy()) {}
  bool operator()(const T& item) const override { return !(*predicate_)(item); }
  ZQNot* CreateCopy() const override { return new ZQNot(*this); }

 private:
  ZQCopyPtr<ZQUnaryPredicate<T>> predicate_;
};

/// The type of a parameter: `const` or not, a reference or a value.
template <class T, bool isConst, bool isReference>
using ZQParameterOf =
    std::conditional_t<isReference,
                       std::add_lvalue_reference_t<std::conditional_t<isConst, const T, T>>,
                       std::conditional_t<isConst, const T, T>>;

/// A function of one argument.
template <class Argument, class Result, bool isConst, bool isReference>
class ZQUnaryFunction {
 public:
  virtual ~ZQUnaryFunction() = default;
  virtual Result operator()(ZQParameterOf<Argument, isConst, isReference> argument) const = 0;
  /// Returns a new object of the same class, owned by the caller.
  virtual ZQUnaryFunction* CreateCopy() const = 0;
};

/// A function of two arguments.
template <class First, class Second, class Result, bool isConst, bool isReference>
class ZQBinaryFunction {
 public:
  virtual ~ZQBinaryFunction() = default;
  virtual Result operator()(ZQParameterOf<First, isConst, isReference> first,
                            ZQParameterOf<Second, isConst, isReference> second) const = 0;
  /// Returns a new object of the same class, owned by the caller.
  virtual ZQBinaryFunction* CreateCopy() const = 0;
};

}  // namespace Bostrel
