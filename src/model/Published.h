// A property that announces every assignment before it happens, equal or not. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <type_traits>
#include <utility>

namespace orvo {

// The observers of one object's published properties.
class ObjectWillChange {
 public:
  enum class Token : std::uint64_t { none = 0 };
  using Observer = std::function<void()>;

  // Called before every assignment, with the old values still in place. Must not assign.
  Token observe(Observer observer) {
    const auto token = static_cast<Token>(++last_);
    observers_.emplace(token, std::move(observer));
    return token;
  }
  void remove(Token token) { observers_.erase(token); }
  void send() const {
    for (const auto& [token, observer] : observers_) observer();
  }

 private:
  std::map<Token, Observer> observers_;
  std::uint64_t last_ = 0;
};

// Assigned by `Owner` alone; by everyone where that is void.
template <typename Value, typename Owner = void>
class Published {
 public:
  Published(ObjectWillChange& willChange, Value value) : willChange_(willChange), value_(std::move(value)) {}
  Published(const Published&) = delete;
  Published& operator=(const Published&) = delete;

  Published& operator=(Value value) requires std::is_void_v<Owner> {
    assign(std::move(value));
    return *this;
  }
  const Value& operator()() const { return value_; }

 private:
  friend Owner;

  Published& operator=(Value value) requires(!std::is_void_v<Owner>) {
    assign(std::move(value));
    return *this;
  }
  void assign(Value value) {
    willChange_.send();
    value_ = std::move(value);
  }

  ObjectWillChange& willChange_;
  Value value_;
};

}  // namespace orvo
