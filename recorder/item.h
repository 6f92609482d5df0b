// Value classes of the stream manager's client library. Records are made of
// these small polymorphic holders and are passed around by value.
#ifndef RECORDER_ITEM_H_
#define RECORDER_ITEM_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class Item {
 public:
  Item() = default;
  Item(const Item&) = default;
  Item& operator=(const Item&) = default;
  virtual ~Item() = default;
};

// One typed value. The named wrappers below are the library's classes.
template <typename T>
class ValueItem : public Item {
 public:
  ValueItem() : value_() {}
  ValueItem(T value) : value_(std::move(value)) {}  // NOLINT: implicit like the library's
  const T& GetValue() const { return value_; }
  void SetValue(T value) { value_ = std::move(value); }

 private:
  T value_;
};

class StringItem : public ValueItem<std::string> {
 public:
  using ValueItem::ValueItem;
};
class IntItem : public ValueItem<int32_t> {
 public:
  using ValueItem::ValueItem;
};
class UIntItem : public ValueItem<uint32_t> {
 public:
  using ValueItem::ValueItem;
};
class UShortItem : public ValueItem<uint16_t> {
 public:
  using ValueItem::ValueItem;
};
class BoolItem : public ValueItem<bool> {
 public:
  using ValueItem::ValueItem;
};

// An officer's display and audio preferences; carried, never read by db.
class Preferences : public Item {
 public:
  UIntItem camera;
  UIntItem display;
  BoolItem audio;
  BoolItem microphone;
  UIntItem screenSaver;
};

// The officer who recorded an event; db reads nothing of it.
class Officer : public Item {
 public:
  UIntItem id;
  StringItem name;
  StringItem badge;
  BoolItem supervisor;
  StringItem password;
  Preferences preferences;
  UShortItem language;
  StringItem unit;
};

class VehicleInfo : public Item {
 public:
  StringItem name;
};

#endif  // RECORDER_ITEM_H_
