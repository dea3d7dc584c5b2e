#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <utility>

#include "foundation/export.h"

namespace orvane {

/// Base of everything that is held through `Ref`. The count lives in the object itself, so that a handle is
/// one pointer wide and an object needs no control block of its own.
///
/// The count is not atomic: an object belongs to one thread at a time, and a hand-over to another thread
/// needs the synchronisation (a join, a lock) that any plain data would need.
class ORVANE_EXPORT RefCounted {
  public:
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

    void retain() const noexcept { ++references_; }
    void release() const noexcept {
        if (--references_ == 0) const_cast<RefCounted*>(this)->dispose();
    }

    /// Number of handles that hold the object; for diagnostics and for owners of weak tables.
    std::uint32_t referenceCount() const noexcept { return references_; }

  protected:
    RefCounted() = default;
    virtual ~RefCounted() = default;

    /// Called when the last handle lets go. The default deletes the object.
    virtual void dispose() noexcept { delete this; }

  private:
    mutable std::uint32_t references_ = 0;

  protected:
    /// Room of derived classes, placed here so that it fills the gap beside the count.
    std::uint32_t reserved_ = 0;
};

/// Owning handle to a `RefCounted` object; empty stands for "none".
template <class T>
class Ref {
  public:
    Ref() noexcept = default;
    Ref(std::nullptr_t) noexcept {}
    explicit Ref(T* object) noexcept : object_(object) {
        if (object_) object_->retain();
    }
    Ref(const Ref& other) noexcept : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    template <class U>
    requires std::convertible_to<U*, T*> Ref(const Ref<U>& other)
    noexcept : Ref(static_cast<T*>(other.get())) {}
    template <class U>
    requires std::convertible_to<U*, T*> Ref(Ref<U>&& other)
    noexcept : object_(other.detach()) {}
    ~Ref() {
        if (object_) object_->release();
    }

    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// Gives up ownership without letting go: the caller now owns the count this handle held.
    T* detach() noexcept { return std::exchange(object_, nullptr); }

    /// Takes over a count that `detach` gave up.
    static Ref adopt(T* object) noexcept {
        Ref result;
        result.object_ = object;
        return result;
    }

    template <class U>
    friend bool operator==(const Ref& left, const Ref<U>& right) noexcept {
        return left.get() == right.get();
    }
    friend bool operator==(const Ref& left, std::nullptr_t) noexcept { return left.object_ == nullptr; }

  private:
    T* object_ = nullptr;
};

/// Makes a new object held by the handle that is returned.
template <class T, class... Arguments>
Ref<T> makeRef(Arguments&&... arguments) {
    return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

/// The same object as the more derived type, or none when it is not of that type.
template <class T, class U>
Ref<T> refCast(const Ref<U>& object) {
    return Ref<T>(dynamic_cast<T*>(object.get()));
}

}  // namespace orvane

template <class T>
struct std::hash<orvane::Ref<T>> {
    std::size_t operator()(const orvane::Ref<T>& object) const noexcept {
        return std::hash<T*>{}(object.get());
    }
};
