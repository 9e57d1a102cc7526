// SPDX-License-Identifier: MIT
//
// A growable array that owns its elements, and an iterator over it.
//
// Ownership: pointer elements are deleted through DeleteVal by Clear() and by the destructor;
//   RemoveAt() hands its element back. A null pointer is an ordinary element.
// Thread safety: none, iterators included. Hold the lock that guards the vector also
//   while an iterator is made, copied, used or destroyed.
#ifndef KECPP_FOUNDATION_KEVECTOR_H
#define KECPP_FOUNDATION_KEVECTOR_H

#include <algorithm>
#include <climits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "foundation/ElementPolicies.h"
#include "foundation/KEExport.h"
#include "foundation/KEIteratorRegistry.h"

namespace KELib {

// Throws IndexOutOfBoundsException "IndexOutOfBoundsException".
[[noreturn]] KECPP_API void ThrowIndexOutOfBounds();

// Throws InvalidIteratorException "KEVectorIterator invalid".
[[noreturn]] KECPP_API void ThrowInvalidVectorIterator();

template <typename T>
class KEVector;

// A position in a vector. It walks by index, so it survives growth of the vector; Clear(),
// RemoveAt() and the vector's destruction invalidate it. An iterator that was never bound is at
// its end. An invalidated one throws InvalidIteratorException "KEVectorIterator invalid" from every
// operation except copying, assignment and destruction. Copies register with the same vector.
template <typename T>
class KECPP_API KEVectorIterator {
 public:
  KEVectorIterator() = default;
  // Points to the first element, or to the end of an empty vector. O(log n) amortised in the
  // number of iterators.
  explicit KEVectorIterator(KEVector<T>& walked);
  KEVectorIterator(const KEVectorIterator& other) { CopyFrom(other); }
  KEVectorIterator& operator=(const KEVectorIterator& other);
  ~KEVectorIterator() { Unregister(); }

  // Whether there is no element at this position.
  bool End() const;

  // The element. At the end: IndexOutOfBoundsException.
  T& operator*() const;
  T* operator->() const { return &**this; }

  // Steps on; at the end nothing happens. The postfix form returns the position before the step.
  KEVectorIterator& operator++();
  KEVectorIterator operator++(int);

 private:
  friend class KEVector<T>;
  friend class KEIteratorRegistry<KEVectorIterator<T>>;

  void CopyFrom(const KEVectorIterator& other);
  void Unregister();
  void Unbind() {
    vector = nullptr;
    index = INVALIDATED;
  }
  void Check() const {
    if (!vector && index == INVALIDATED) {
      ThrowInvalidVectorIterator();
    }
  }

  // Without a vector: distinguishes a dropped iterator from one that was never bound.
  static constexpr unsigned int INVALIDATED = UINT_MAX;

  KEVector<T>* vector = nullptr;
  unsigned int index = 0;
  KEVectorIterator** slot = nullptr;  // its entry in the vector's registry
};

template <typename T>
class KECPP_API KEVector {
 public:
  KEVector() : KEVector(0) {}
  // Room for `slots` elements, 0 meaning 2.
  explicit KEVector(unsigned int slots) {
    T* fresh = nullptr;
    Create(slots, fresh, capacity);
    data.reset(fresh);
  }
  KEVector(const KEVector&) = delete;
  KEVector& operator=(const KEVector&) = delete;
  // Invalidates the iterators and deletes the elements.
  ~KEVector() { Clear(); }

  // Makes an array of `n` default-constructed elements (0 meaning 2) that the caller frees with
  // array delete, and stores its size in `slots`. Trivially copyable elements are zero-filled.
  // More than 4 GiB of elements: std::bad_alloc.
  static void Create(unsigned int n, T*& array, unsigned int& slots);

  // Appends a copy of `value`, which may be an element of this vector. A pointer's object now
  // belongs to the vector. The room doubles when it would become full; iterators stay valid.
  // O(1) amortised. When it throws (std::bad_alloc) nothing has changed.
  void Add(const T& value) {
    if (count + 1 >= capacity) {
      AddWithGrowth(value);
    } else {
      data[count] = value;
    }
    ++count;
  }

  // The element at `index`; beyond the last one: IndexOutOfBoundsException.
  T& Get(unsigned int index) {
    CheckIndex(index);
    return data[index];
  }
  const T& Get(unsigned int index) const {
    CheckIndex(index);
    return data[index];
  }
  T& operator[](unsigned int index) { return Get(index); }
  const T& operator[](unsigned int index) const { return Get(index); }

  unsigned int Count() const { return count; }
  unsigned int Capacity() const { return capacity; }

  // The first position of `value` (pointers by identity, KEString by its text), or
  // Capacity() + Count() when it is absent: test for "below Count()". O(n).
  unsigned int Index(const T& value) const;

  // Takes the element at `index` out without deleting it; later elements move down one place and
  // every iterator is invalidated. Beyond the last one: IndexOutOfBoundsException. O(n).
  void RemoveAt(unsigned int index);

  // Invalidates the iterators and deletes all elements; the room is kept.
  void Clear();

  // An iterator on the first element.
  KEVectorIterator<T> Begin() { return KEVectorIterator<T>(*this); }

  // Binds `iterator`, at the position that it has, to this vector and registers it; an invalidated
  // one then points to the first element. One that is registered here already stays as it is; one
  // of another vector leaves that. O(log n) amortised in the number of iterators.
  void SaveIt(KEVectorIterator<T>* iterator);

 private:
  friend class KEVectorIterator<T>;

  void AddWithGrowth(const T& value);
  void CheckIndex(unsigned int index) const {
    if (index >= count) {
      ThrowIndexOutOfBounds();
    }
  }

  unsigned int count = 0;
  unsigned int capacity = 0;
  std::unique_ptr<T[]> data;
  KEIteratorRegistry<KEVectorIterator<T>> iterators;
};

template <typename T>
KEVectorIterator<T>::KEVectorIterator(KEVector<T>& walked) {
  walked.SaveIt(this);
}

template <typename T>
KEVectorIterator<T>& KEVectorIterator<T>::operator=(const KEVectorIterator& other) {
  if (this != &other) {
    Unregister();
    CopyFrom(other);
  }
  return *this;
}

template <typename T>
void KEVectorIterator<T>::CopyFrom(const KEVectorIterator& other) {
  index = other.index;
  if (other.vector) {
    other.vector->SaveIt(this);
  }
}

template <typename T>
void KEVectorIterator<T>::Unregister() {
  if (vector && slot) {  // the second alone would do, but compilers warn of a null vector
    vector->iterators.Remove(this);
  }
  vector = nullptr;
}

template <typename T>
bool KEVectorIterator<T>::End() const {
  Check();
  return !vector || index >= vector->Count();
}

template <typename T>
T& KEVectorIterator<T>::operator*() const {
  if (End()) {
    ThrowIndexOutOfBounds();
  }
  return vector->data[index];
}

template <typename T>
KEVectorIterator<T>& KEVectorIterator<T>::operator++() {
  if (!End()) {
    ++index;
  }
  return *this;
}

template <typename T>
KEVectorIterator<T> KEVectorIterator<T>::operator++(int) {
  KEVectorIterator before(*this);
  ++*this;
  return before;
}

template <typename T>
void KEVector<T>::Create(unsigned int n, T*& array, unsigned int& slots) {
  constexpr unsigned int smallest = 2;
  const unsigned int wanted = n == 0 ? smallest : n;
  if (wanted > UINT_MAX / sizeof(T)) {
    throw std::bad_alloc();
  }
  array = new T[wanted]();
  if constexpr (std::is_trivially_copyable_v<T>) {
    SetZero(array, static_cast<unsigned int>(wanted * sizeof(T)));
  }
  slots = wanted;
}

template <typename T>
void KEVector<T>::AddWithGrowth(const T& value) {
  if (capacity > UINT_MAX / 2) {
    throw std::bad_alloc();
  }
  T* array = nullptr;
  unsigned int slots = 0;
  Create(2 * capacity, array, slots);
  std::unique_ptr<T[]> fresh(array);
  fresh[count] = value;  // first: it may be one of the elements that move
  std::move(data.get(), data.get() + count, fresh.get());
  data = std::move(fresh);
  capacity = slots;
}

template <typename T>
unsigned int KEVector<T>::Index(const T& value) const {
  for (unsigned int i = 0; i < count; ++i) {
    if constexpr (std::is_same_v<T, KEString>) {
      if (std::strcmp(data[i].Cstr(), value.Cstr()) == 0) {
        return i;
      }
    } else if (data[i] == value) {
      return i;
    }
  }
  return capacity + count;
}

template <typename T>
void KEVector<T>::RemoveAt(unsigned int index) {
  CheckIndex(index);
  iterators.UnbindAll();
  T* const first = data.get();
  std::move(first + index + 1, first + count, first + index);
  --count;
  data[count] = T();
}

template <typename T>
void KEVector<T>::Clear() {
  iterators.UnbindAll();
  bool zeroFill = false;
  for (unsigned int i = 0; i < count; ++i) {
    if constexpr (std::is_pointer_v<T>) {
      // The slot is emptied first: a destructor may look for its object in this vector.
      zeroFill = DeleteVal(std::exchange(data[i], nullptr));
    } else {
      zeroFill = DeleteVal(data[i]);
    }
  }
  if constexpr (std::is_trivially_copyable_v<T>) {
    if (zeroFill) {
      SetZero(data.get(), static_cast<unsigned int>(capacity * sizeof(T)));
    }
  }
  count = 0;
}

template <typename T>
void KEVector<T>::SaveIt(KEVectorIterator<T>* iterator) {
  if (iterator->slot && iterator->vector == this) {
    return;
  }
  iterator->Unregister();
  iterators.Add(iterator);
  iterator->vector = this;
  if (iterator->index == KEVectorIterator<T>::INVALIDATED) {
    iterator->index = 0;
  }
}

}  // namespace KELib

#endif
