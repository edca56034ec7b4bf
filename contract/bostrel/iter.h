#pragma once

/// Owning iterators, returned by every query that has many results. An iterator is false at its
/// end; a null iterator is empty. An iterator is for one thread.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace Bostrel {

/// The abstract iterator, for sources that aren't a plain vector. `ZQIter` is its owning handle.
template <class T>
class ZQIterBase {
 public:
  virtual ~ZQIterBase() = default;
  /// Returns a new iterator at the same position, owned by the caller.
  virtual ZQIterBase* Copy() const = 0;
  /// Moves back by one so that the next `++` returns to the current value.
  virtual void Push() { --*this; }
  virtual ZQIterBase& operator++() = 0;
  virtual ZQIterBase& operator--() = 0;
  virtual ZQIterBase& operator+=(unsigned int n) = 0;
  virtual ZQIterBase& operator-=(unsigned int n) = 0;
  virtual ZQIterBase& operator+=(int n) {
    return n < 0 ? *this -= 0U - static_cast<unsigned>(n) : *this += static_cast<unsigned>(n);
  }
  virtual ZQIterBase& operator-=(int n) {
    return n < 0 ? *this += 0U - static_cast<unsigned>(n) : *this -= static_cast<unsigned>(n);
  }
  virtual void ToFirst() = 0;
  virtual void ToLast() = 0;
  virtual T& operator*() const = 0;
  virtual T* operator->() const = 0;
  /// Whether there is a current value.
  virtual explicit operator bool() const = 0;
};

/// Owns an iterator of any kind; empty if default constructed or made from null. Stepping an empty
/// iterator does nothing; dereferencing one is undefined.
template <class T>
class ZQIter {
 public:
  ZQIter() = default;
  /// Takes ownership; implicit, so that a query can return the result of `new`.
  ZQIter(ZQIterBase<T>* base) : base_(base) {}  // NOLINT(google-explicit-constructor)
  ZQIter(const ZQIter& other) : base_(other.base_ ? other.base_->Copy() : nullptr) {}
  ZQIter(ZQIter&&) noexcept = default;
  ZQIter& operator=(ZQIter other) noexcept {
    base_ = std::move(other.base_);
    return *this;
  }
  ~ZQIter() = default;

  bool IsValid() const { return base_ && static_cast<bool>(*base_); }
  explicit operator bool() const { return IsValid(); }
  T& operator*() const { return **base_; }
  T* operator->() const { return base_->operator->(); }
  ZQIter& operator++() {
    if (base_) ++*base_;
    return *this;
  }
  ZQIter& operator--() {
    if (base_) --*base_;
    return *this;
  }
  ZQIter& operator+=(unsigned int n) {
    if (base_) *base_ += n;
    return *this;
  }
  void ToFirst() {
    if (base_) base_->ToFirst();
  }
  void ToLast() {
    if (base_) base_->ToLast();
  }

 private:
  std::unique_ptr<ZQIterBase<T>> base_;
};

/// Iterates over a vector: one that it owns, or one that must outlive it.
template <class T>
class ZQVectorIter : public ZQIterBase<T> {
 public:
  using Vector = std::vector<std::remove_const_t<T>>;
  /// Of constant values, also a constant vector.
  using Source = std::conditional_t<std::is_const_v<T>, const Vector, Vector>;

  explicit ZQVectorIter(Vector&& values) : owned_(std::move(values)), values_(&owned_) {}
  explicit ZQVectorIter(Source* values) : values_(values) {}
  ZQVectorIter(const ZQVectorIter& other)
      : owned_(other.owned_),
        values_(other.values_ == &other.owned_ ? &owned_ : other.values_),
        position_(other.position_) {}
  ZQVectorIter& operator=(const ZQVectorIter&) = delete;

  ZQVectorIter* Copy() const override { return new ZQVectorIter(*this); }
  ZQVectorIter& operator++() override { return *this += 1U; }
  ZQVectorIter& operator--() override { return *this -= 1U; }
  using ZQIterBase<T>::operator+=;
  using ZQIterBase<T>::operator-=;
  ZQVectorIter& operator+=(unsigned int n) override {
    position_ += n;
    return *this;
  }
  ZQVectorIter& operator-=(unsigned int n) override {
    position_ -= n;
    return *this;
  }
  void ToFirst() override { position_ = 0; }
  void ToLast() override { position_ = values_->size() - 1; }
  T& operator*() const override { return (*values_)[position_]; }
  T* operator->() const override { return &(*values_)[position_]; }
  // A step before the first entry wraps to a huge position, which is also past the end.
  explicit operator bool() const override { return position_ < values_->size(); }

 private:
  Vector owned_;
  Source* values_;
  std::size_t position_ = 0;
};

/// Iterates over objects through a vector of pointers to them, such as atoms and bonds.
template <class T>
class ZQPointerIter : public ZQIterBase<T> {
 public:
  explicit ZQPointerIter(std::vector<T*>&& pointers) : pointers_(std::move(pointers)) {}

  ZQPointerIter* Copy() const override { return new ZQPointerIter(*this); }
  ZQPointerIter& operator++() override { return *this += 1U; }
  ZQPointerIter& operator--() override { return *this -= 1U; }
  using ZQIterBase<T>::operator+=;
  using ZQIterBase<T>::operator-=;
  ZQPointerIter& operator+=(unsigned int n) override {
    position_ += n;
    return *this;
  }
  ZQPointerIter& operator-=(unsigned int n) override {
    position_ -= n;
    return *this;
  }
  void ToFirst() override { position_ = 0; }
  void ToLast() override { position_ = pointers_.size() - 1; }
  T& operator*() const override { return *pointers_[position_]; }
  T* operator->() const override { return pointers_[position_]; }
  explicit operator bool() const override { return position_ < pointers_.size(); }

 private:
  std::vector<T*> pointers_;
  std::size_t position_ = 0;
};

/// Concatenates iterators: the values of the first, then those of the second, and so on. Empty ones
/// are skipped. Begins with the first value of all, regardless of the parts' positions.
template <class T>
class ZQConcatIter : public ZQIterBase<T> {
 public:
  explicit ZQConcatIter(std::vector<ZQIter<T>> parts) : parts_(std::move(parts)) {
    ConcatToFirst();
  }
  ZQConcatIter(ZQIter<T> first, ZQIter<T> second)
      : ZQConcatIter(std::vector<ZQIter<T>>{std::move(first), std::move(second)}) {}

  ZQConcatIter* Copy() const override { return new ZQConcatIter(*this); }
  ZQConcatIter& operator++() override {
    if (outside_ != 0) {
      if (++outside_ == 0) ToFirst();
      return *this;
    }
    ++parts_[part_];
    while (!parts_[part_]) {
      if (++part_ == parts_.size()) {
        outside_ = 1;
        return *this;
      }
      parts_[part_].ToFirst();
    }
    return *this;
  }
  ZQConcatIter& operator--() override {
    if (outside_ != 0) {
      if (--outside_ == 0) ToLast();
      return *this;
    }
    --parts_[part_];
    while (!parts_[part_]) {
      if (part_ == 0) {
        outside_ = -1;
        return *this;
      }
      parts_[--part_].ToLast();
    }
    return *this;
  }
  using ZQIterBase<T>::operator+=;
  using ZQIterBase<T>::operator-=;
  ZQConcatIter& operator+=(unsigned int n) override {
    for (; n != 0 && outside_ <= 0; --n) ++*this;
    outside_ += n;
    return *this;
  }
  ZQConcatIter& operator-=(unsigned int n) override {
    for (; n != 0 && outside_ >= 0; --n) --*this;
    outside_ -= n;
    return *this;
  }
  void ToFirst() override { ConcatToFirst(); }
  void ToLast() override {
    for (part_ = parts_.size(); part_ != 0;) {
      parts_[--part_].ToLast();
      if (parts_[part_]) {
        outside_ = 0;
        return;
      }
    }
    outside_ = -1;
  }
  T& operator*() const override { return *parts_[part_]; }
  T* operator->() const override { return &*parts_[part_]; }
  explicit operator bool() const override { return outside_ == 0; }

 private:
  void ConcatToFirst() {
    for (part_ = 0; part_ != parts_.size(); ++part_) {
      parts_[part_].ToFirst();
      if (parts_[part_]) {
        outside_ = 0;
        return;
      }
    }
    outside_ = 1;
  }

  std::vector<ZQIter<T>> parts_;
  std::size_t part_ = 0;      // index of the current part
  std::int64_t outside_ = 0;  // steps before the first value (below 0) or after the last
};

}  // namespace Bostrel
