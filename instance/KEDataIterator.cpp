// SPDX-License-Identifier: MIT
#include "instance/KEDataIterator.h"

namespace KE::Instance {

KEDataIterator::KEDataIterator(const Position& start) : position(start) {}

KEDataIterator::KEDataIterator(const KEDataIterator& other) : position(other.position) {}

KEDataIterator& KEDataIterator::operator=(const KEDataIterator& other) {
  if (this == &other) return *this;
  if (position.Map() != nullptr && position.Map() == other.position.Map()) {
    entry = other.entry;
  } else {
    position = other.position;
    entry = nullptr;
  }
  return *this;
}

KEDataIterator& KEDataIterator::operator++() {
  ++position;
  return *this;
}

KEDataIterator KEDataIterator::operator++(int) {
  KEDataIterator before(*this);
  ++position;
  return before;
}

KEDataIterator::Entry*& KEDataIterator::operator*() {
  entry = position.Current();
  return entry;
}

KEDataIterator::Entry*& KEDataIterator::operator->() {
  return **this;
}

bool KEDataIterator::End() const {
  return position.End();
}

}  // namespace KE::Instance
