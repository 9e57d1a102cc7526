// SPDX-License-Identifier: MIT
#include "stress/Board.h"

#include <unistd.h>

#include <algorithm>

namespace stress {
namespace {

using Lock = std::lock_guard<std::mutex>;

}  // namespace

std::vector<Posture> Board::Look() const {
  const Lock lock(mutex);
  std::vector<Posture> all;
  for (const Seat* seat : seats) all.push_back(seat->Look());
  return all;
}

void Board::NoteEnd(const Posture& ended) {
  const auto took = std::chrono::steady_clock::now() - ended.since;
  const Lock lock(mutex);
  if (ended.resting || took <= longestTime) return;
  longestTime = took;
  longest = ended;
}

std::string Board::LongestStep() const {
  const Lock lock(mutex);
  return std::to_string(std::chrono::duration<double>(longestTime).count()) + " s: '" +
         longest.actor + "' " + longest.step;
}

Seat::Seat(Board& where, const std::string& actor) : board(where) {
  posture.actor = actor;
  posture.thread = gettid();
  const Lock lock(board.mutex);
  board.seats.push_back(this);
}

Seat::~Seat() {
  board.NoteEnd(Look());
  const Lock lock(board.mutex);
  board.seats.erase(std::find(board.seats.begin(), board.seats.end(), this));
}

void Seat::Does(const char* step) {
  board.NoteEnd(Look());
  const Lock lock(mutex);
  posture.step = step;
  posture.since = std::chrono::steady_clock::now();
  posture.resting = false;
}

void Seat::Rests(const char* step) {
  Does(step);
  const Lock lock(mutex);
  posture.resting = true;
}

void Seat::WaitsFor(const char* name) {
  const Lock lock(mutex);
  posture.waitsFor = name;
}

void Seat::Took(const char* name) {
  const Lock lock(mutex);
  posture.waitsFor = nullptr;
  posture.holds.push_back(name);
}

void Seat::Gave(const char* name) {
  const Lock lock(mutex);
  posture.holds.erase(std::find(posture.holds.begin(), posture.holds.end(), name));
}

Posture Seat::Look() const {
  const Lock lock(mutex);
  return posture;
}

ShownGuard::ShownGuard(Seat& actor, const char* lockName, KELib::KEMutex* lock)
    : seat(actor), name(lockName), mutex(lock) {
  if (!mutex) return;
  seat.WaitsFor(name);
  mutex->Lock();
  seat.Took(name);
}

ShownGuard::~ShownGuard() {
  if (!mutex) return;
  mutex->Unlock();
  seat.Gave(name);
}

}  // namespace stress
