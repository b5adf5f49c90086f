#include "QTD/frame/Properties.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "QTD/frame/Text.h"
#include "frame/Waiting.h"

namespace {

using QTD::ARGUMENTS;
using QTD::PROPERTIES;
using std::chrono::milliseconds;
using std::chrono::seconds;

// All pairs in order, as "name=value;...".
std::string Dump(PROPERTIES& list) {
  std::string text;
  for (int i = 0; i < list.Count(); ++i) {
    text += list.NameAt(i) + "=" + list.GetString(list.NameAt(i)) + ";";
  }
  return text;
}

// Another thread that holds the list's lock until told to let go.
class Holder {
 public:
  explicit Holder(PROPERTIES& list) {
    std::promise<void> locked;
    std::future<void> isLocked = locked.get_future();
    thread = std::thread([&list, this, promise = std::move(locked)]() mutable {
      list.Mutex().lock();
      promise.set_value();
      letGo.get_future().wait();
      released = true;
      list.Mutex().unlock();
    });
    isLocked.wait();
  }
  ~Holder() { Release(); }
  void Release() {
    if (!thread.joinable()) return;
    letGo.set_value();
    thread.join();
  }
  void ReleaseSoon() {
    later = std::async(std::launch::async, [this] {
      std::this_thread::sleep_for(milliseconds(30));
      letGo.set_value();
    });
  }
  void Join() { thread.join(); }

  std::atomic<bool> released{false};

 private:
  std::promise<void> letGo;
  std::future<void> later;
  std::thread thread;
};

template <typename Call>
bool EndsWhileHeld(PROPERTIES& list, Call call, milliseconds patience = seconds(10)) {
  Holder holder(list);
  std::future<void> done = std::async(std::launch::async, call);
  const bool ended = done.wait_for(patience) == std::future_status::ready;
  holder.Release();
  done.get();
  return ended;
}

template <typename Call>
bool WaitsWhileHeld(PROPERTIES& list, Call call) {
  return !EndsWhileHeld(list, call, milliseconds(100));
}

TEST(Properties, keeps_the_order_of_first_insertion) {
  PROPERTIES list;
  list.Set("c", "1").Set("a", "2").Set("b", "3").Set("a", "4");
  EXPECT_EQ(Dump(list), "c=1;a=4;b=3;");
}

TEST(Properties, ignores_an_empty_name) {
  PROPERTIES list;
  for (bool before : {false, true}) {
    bool stored = before;
    list.Set("", "value", true, &stored);
    EXPECT_EQ(stored, before);
  }
  EXPECT_EQ(list.Count(), 0);
  EXPECT_TRUE(EndsWhileHeld(list, [&] { list.Set("", "value"); })) << "the lock is not taken";
}

TEST(Properties, compares_names_exactly) {
  PROPERTIES list;
  list.Set("name", "1").Set("Name", "2").Set("name ", "3").Set(std::string("name\0", 5), "4");
  EXPECT_EQ(list.Count(), 4);
  EXPECT_EQ(list.GetInt("name"), 1);
  EXPECT_EQ(list.GetInt("Name"), 2);
  EXPECT_EQ(list.GetInt("name "), 3);
}

TEST(Properties, keeps_the_index_of_an_item_that_is_overwritten) {
  PROPERTIES list;
  list.Set("a", "1").Set("b", "2");
  bool stored = false;
  list.Set("a", "9", true, &stored);
  EXPECT_TRUE(stored);
  EXPECT_EQ(list.NameAt(0), "a");
  EXPECT_EQ(Dump(list), "a=9;b=2;");
}

TEST(Properties, leaves_a_present_item_without_overwrite_and_says_so) {
  PROPERTIES list;
  bool stored = false;
  list.Set("a", "1", false, &stored);
  EXPECT_TRUE(stored) << "an absent item is stored";
  list.Set("a", "2", false, &stored);
  EXPECT_FALSE(stored);
  list.Set("a", "3", false);
  EXPECT_EQ(Dump(list), "a=1;");
}

TEST(Properties, sets_all_rows_of_a_table_in_their_order_and_overwrites) {
  constexpr QTD::Default kRows[] = {{"c", "3"}, {"a", "1"}, {"b", ""}};
  PROPERTIES list;
  list.Set("a", "0").SetAll(kRows).Set("d", "4");
  EXPECT_EQ(Dump(list), "a=1;c=3;b=;d=4;");
}

TEST(Properties, finds_an_item_or_the_end) {
  PROPERTIES list;
  list.Set("a", "1").Set("b", "2");
  ASSERT_NE(list.Find("b"), list.end());
  EXPECT_EQ(list.Find("b")->value, "2");
  EXPECT_EQ(list.Find("c"), list.end());
  EXPECT_TRUE(list.Has("a"));
  EXPECT_FALSE(list.Has("c"));
  std::string value = "untouched";
  EXPECT_FALSE(list.Lookup("c", &value));
  EXPECT_EQ(value, "untouched");
  EXPECT_TRUE(list.Lookup("a", &value));
  EXPECT_EQ(value, "1");
  EXPECT_TRUE(list.Lookup("a", nullptr));
}

TEST(Properties, gives_an_empty_name_for_an_index_out_of_range) {
  PROPERTIES list;
  list.Set("a", "1").Set("b", "2");
  EXPECT_EQ(list.NameAt(-1), "");
  EXPECT_EQ(list.NameAt(2), "");
  EXPECT_EQ(list.NameAt(1), "b");
  EXPECT_TRUE(list.IsIndexValid(0));
  EXPECT_FALSE(list.IsIndexValid(-1));
  EXPECT_FALSE(list.IsIndexValid(2));
}

TEST(Properties, takes_a_present_value_even_when_empty) {
  PROPERTIES list;
  list.Set("e", "");
  EXPECT_EQ(list.GetInt("e", "7"), 0);
  EXPECT_EQ(list.GetInt64("e", "7"), 0);
  EXPECT_FALSE(list.GetBool("e", "1"));
  EXPECT_EQ(list.GetDouble("e", "7"), 0.0);
  EXPECT_EQ(list.GetPointer("e", "0x10"), nullptr);
  EXPECT_EQ(list.GetString("e", "text"), "");
}

TEST(Properties, takes_the_fallback_of_an_absent_name) {
  PROPERTIES list;
  EXPECT_EQ(list.GetInt("n", "7"), 7);
  EXPECT_EQ(list.GetInt("n"), 0);
  EXPECT_EQ(list.GetInt64("n", "5000000000"), 5000000000);
  EXPECT_TRUE(list.GetBool("n", "1"));
  EXPECT_EQ(list.GetDouble("n", "0.25"), 0.25);
  EXPECT_EQ(list.GetPointer("n", "0x10"), reinterpret_cast<void*>(16));
  EXPECT_EQ(list.GetString("n", "text"), "text");
  EXPECT_EQ(list.Count(), 0) << "a read makes no item";
}

TEST(Properties, parses_what_it_holds) {
  PROPERTIES list;
  list.Set("digits", "12abc").Set("letters", "abc").Set("flag", "true").Set("zero", std::string(1, '\0'));
  EXPECT_EQ(list.GetInt("digits"), 12);
  EXPECT_EQ(list.GetInt("zero", "7"), 0) << "a value of one zero byte reads as empty";
  try {
    list.GetInt("letters");
    FAIL() << "no exception";
  } catch (const std::invalid_argument& error) {
    EXPECT_STREQ(error.what(), "invalid stoi argument");
  }
  EXPECT_THROW(list.GetBool("flag"), std::invalid_argument);
  // From another thread, as the lock is recursive.
  waiting::InTime("a list after an exception", [&] { list.Set("letters", "1"); });
  EXPECT_EQ(list.GetInt("letters"), 1);
}

TEST(Properties, keeps_six_decimals_of_a_double) {
  PROPERTIES list;
  list.Set("d", QTD::ToText(0.1234567));
  EXPECT_EQ(list.GetDouble("d"), 0.123457);
}

TEST(Properties, merges_another_list_and_overwrites) {
  PROPERTIES list;
  PROPERTIES other;
  list.Set("a", "1").Set("b", "2");
  other.Set("c", "3").Set("a", "4");
  list.Merge(&other);
  EXPECT_EQ(Dump(list), "a=4;b=2;c=3;");
  EXPECT_EQ(Dump(other), "c=3;a=4;");
  list.Merge(nullptr);
  EXPECT_EQ(list.Count(), 3);
}

TEST(Properties, merges_with_itself) {
  PROPERTIES list;
  list.Set("a", "1").Set("b", "2");
  list.Merge(&list);
  EXPECT_EQ(Dump(list), "a=1;b=2;");
}

TEST(Properties, imports_arguments_in_the_maps_order) {
  PROPERTIES list;
  list.Set("b", "0");
  list.ImportArguments({{"c", "3"}, {"b", "2"}, {"a", "1"}, {"", "none"}});
  EXPECT_EQ(Dump(list), "b=2;a=1;c=3;");
}

TEST(Properties, exports_its_items_and_counts_them) {
  PROPERTIES list;
  list.Set("a", "1").Set("b", "2");
  ARGUMENTS arguments = {{"a", "old"}, {"z", "26"}};
  EXPECT_EQ(list.ExportArguments(arguments), 2);
  EXPECT_EQ(arguments, (ARGUMENTS{{"a", "1"}, {"b", "2"}, {"z", "26"}}));
}

TEST(Properties, copies_items_into_a_list_with_a_lock_of_its_own) {
  PROPERTIES list;
  list.Set("a", "1").Set("b", "2");
  const std::lock_guard<std::recursive_mutex> guard(list.Mutex());
  PROPERTIES copy(list);
  EXPECT_EQ(copy.Count(), 2);
  EXPECT_TRUE(std::async(std::launch::async, [&] { return Dump(copy) == "a=1;b=2;"; }).get());
  copy.Set("a", "9");
  EXPECT_EQ(list.GetInt("a"), 1);
}

TEST(Properties, replaces_its_items_by_assignment) {
  PROPERTIES list;
  PROPERTIES other;
  list.Set("a", "1").Set("b", "2");
  other.Set("c", "3");
  list = other;
  EXPECT_EQ(list.Count(), 1);
  EXPECT_EQ(Dump(list), "c=3;");
  PROPERTIES& same = list;
  list = same;
  EXPECT_EQ(Dump(list), "c=3;");
}

TEST(Properties, waits_for_the_lock_of_the_list_that_it_copies) {
  PROPERTIES list;
  list.Set("a", "1");
  PROPERTIES target;
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { PROPERTIES copy(list); }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { target = list; }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { target.Merge(&list); }));
}

TEST(Properties, holds_no_lock_of_its_own_while_it_waits_for_another_list) {
  PROPERTIES list;
  PROPERTIES target;
  const auto isFreeDuring = [&](auto call) {
    Holder holder(list);
    std::future<void> waiting = std::async(std::launch::async, call);
    EXPECT_EQ(waiting.wait_for(milliseconds(50)), std::future_status::timeout);
    const bool isFree = target.Mutex().try_lock();
    if (isFree) target.Mutex().unlock();
    holder.Release();
    waiting.get();
    return isFree;
  };
  EXPECT_TRUE(isFreeDuring([&] { target.Merge(&list); }));
  EXPECT_TRUE(isFreeDuring([&] { target = list; }));
}

TEST(Properties, takes_its_lock_in_every_operation_but_the_count) {
  PROPERTIES list;
  list.Set("a", "1");
  PROPERTIES other;
  ARGUMENTS arguments;
  EXPECT_TRUE(EndsWhileHeld(list, [&] { EXPECT_EQ(list.Count(), 1); }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { list.Set("a", "1"); }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { list.Find("a"); }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { list.NameAt(0); }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { list.GetInt("a"); }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { list.Merge(&other); }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { list.ImportArguments(arguments); }));
  EXPECT_TRUE(WaitsWhileHeld(list, [&] { list.ExportArguments(arguments); }));
}

TEST(Properties, nests_under_its_own_lock) {
  PROPERTIES list;
  const std::lock_guard<std::recursive_mutex> guard(list.Mutex());
  list.Set("a", "1");
  list.Merge(&list);
  EXPECT_EQ(list.GetInt("a"), 1);
}

TEST(Properties, waits_in_its_destructor_for_a_thread_inside) {
  auto list = std::make_unique<PROPERTIES>();
  Holder holder(*list);
  holder.ReleaseSoon();
  list.reset();
  EXPECT_TRUE(holder.released);
  holder.Join();
}

TEST(Properties, merges_and_assigns_crosswise_from_two_threads_without_a_deadlock) {
  PROPERTIES one;
  PROPERTIES two;
  one.Set("a", "1");
  two.Set("b", "2");
  const auto work = [](PROPERTIES& target, PROPERTIES& source) {
    for (int i = 0; i < 2000; ++i) {
      target.Merge(&source);
      if (i % 2) target = source;
    }
  };
  std::future<void> there = std::async(std::launch::async, [&] { work(one, two); });
  std::future<void> back = std::async(std::launch::async, [&] { work(two, one); });
  ASSERT_EQ(there.wait_for(seconds(60)), std::future_status::ready);
  ASSERT_EQ(back.wait_for(seconds(60)), std::future_status::ready);
  EXPECT_GE(one.Count(), 1);
}

TEST(Properties, serves_several_threads_at_once) {
  PROPERTIES list;
  const auto work = [&](int thread) {
    for (int i = 0; i < 200; ++i) {
      const std::string name = QTD::ToText(thread) + "." + QTD::ToText(i % 20);
      list.Set(name, QTD::ToText(i));
      EXPECT_EQ(list.GetInt(name), i);
      EXPECT_NE(list.NameAt(list.Count() - 1), "");
      PROPERTIES copy(list);
    }
  };
  std::future<void> other = std::async(std::launch::async, work, 1);
  work(2);
  other.get();
  EXPECT_EQ(list.Count(), 40);
}

TEST(Properties, forgets_all_items_when_cleared) {
  PROPERTIES list;
  list.Set("a", "1");
  list.Clear();
  EXPECT_EQ(list.Count(), 0);
  EXPECT_FALSE(list.Has("a"));
}

}  // namespace
