// The ordered, locked list of name/value texts: a component's parameters, a message's attributes.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "ZynComponent.h"

namespace QTD {

struct Property {
  std::string name;
  std::string value;
};

// A row of a table of values that a list starts with, or goes back to.
struct Default {
  const char* name;
  const char* value;
};

// Names are unique and never empty; the order of insertion stays, and single items are never removed. Any
// thread may call any operation.
class PROPERTIES {
 public:
  PROPERTIES() = default;
  PROPERTIES(const PROPERTIES& other);             // copies the items; mutex and tag are fresh
  PROPERTIES& operator=(const PROPERTIES& other);  // replaces the items
  virtual ~PROPERTIES();                           // waits until no thread is inside an operation

  // Appends, or replaces the value when `overwrite` is set. `stored` tells whether `value` now stands in the
  // list. An empty name changes nothing, `stored` included.
  PROPERTIES& Set(std::string name, std::string value, bool overwrite = true, bool* stored = nullptr);
  // Every row, overwriting, in the table's order.
  template <size_t kRows>
  PROPERTIES& SetAll(const Default (&rows)[kRows]) {
    for (const Default& row : rows) Set(row.name, row.value);
    return *this;
  }

  // Position of the item, or end(). Good only while no other thread can append: hold `lock` or own the list.
  std::vector<Property>::iterator Find(std::string_view name);
  std::vector<Property>::iterator end() { return items.end(); }
  bool Has(std::string_view name);
  // The value, under the lock; false when there is no such item.
  bool Lookup(std::string_view name, std::string* value);

  int Count() const { return count; }  // takes no lock, may be out of date
  bool IsIndexValid(int index) const { return index >= 0 && index < Count(); }
  std::string NameAt(int index);

  // Reads. A present value is taken even when empty; an absent one gives `fallback`. Parsing: see Text.h.
  // Stages read for each picture: a name costs no memory, nor does a short value.
  int GetInt(std::string_view name, std::string_view fallback = "");
  int64_t GetInt64(std::string_view name, std::string_view fallback = "");
  bool GetBool(std::string_view name, std::string_view fallback = "");
  double GetDouble(std::string_view name, std::string_view fallback = "");
  void* GetPointer(std::string_view name, std::string_view fallback = "");
  std::string GetString(std::string_view name, std::string_view fallback = "");

  void Merge(PROPERTIES* other);                     // every pair of the other list, overwriting
  void ImportArguments(const ARGUMENTS& arguments);  // every pair of the map, overwriting
  int ExportArguments(ARGUMENTS& arguments);         // answers how many it stored
  void Clear();                                      // removes all items

  std::recursive_mutex& Mutex() { return lock; }

 private:
  std::vector<Property> Items() const;  // a copy, taken under the lock
  // With `lock` held: the position of `name`, and the update of `count` after the items changed.
  std::vector<Property>::iterator Position(std::string_view name);
  void Counted();
  std::string TextOf(std::string_view name, std::string_view fallback);

  std::vector<Property> items;        // guarded by `lock`
  std::atomic<int> count{0};          // their number, so that Count needs no lock
  mutable std::recursive_mutex lock;  // guards `items`
  std::string tag;                    // kept, and always empty
};

}  // namespace QTD
