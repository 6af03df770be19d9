#include "compare/json_difference.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace lineup {

namespace {

using nlohmann::json;

/// Walks both values at once, with the path of where it is.
class Comparison {
 public:
  explicit Comparison(const Differing& differing) : differing_(differing) {}

  void compare(const json& from, const json& to) {
    if (from.is_object() && to.is_object()) {
      compareObjects(from, to);
    } else if (from.is_array() && to.is_array()) {
      compareArrays(from.get_ref<const json::array_t&>(), to.get_ref<const json::array_t&>());
    } else if (from != to) {
      note(&from, &to);
    }
  }

 private:
  /// Does `work` one step further down the path.
  template <class Work>
  void within(const std::string& step, Work work) {
    path_.push_back(step);
    work();
    path_.pop_back();
  }

  void note(const json* before, const json* now) { differing_(path_.to_string(), before, now); }

  void compareObjects(const json& from, const json& to) {
    for (const auto& [name, before] : from.items()) {
      const auto now = to.find(name);
      within(name, [&, &before = before] {
        if (now == to.end()) {
          note(&before, nullptr);
        } else {
          compare(before, *now);
        }
      });
    }
    for (const auto& [name, now] : to.items()) {
      if (!from.contains(name)) {
        within(name, [&, &now = now] { note(nullptr, &now); });
      }
    }
  }

  void compareArrays(const json::array_t& from, const json::array_t& to) {
    const auto [differs, differsTo] = std::mismatch(from.begin(), from.end(), to.begin(), to.end());
    const auto begin = static_cast<std::size_t>(differs - from.begin());
    std::size_t end = from.size();
    std::size_t endTo = to.size();
    while (end > begin && endTo > begin && from[end - 1] == to[endTo - 1]) {
      --end;
      --endTo;
    }
    for (std::size_t index = begin; index < std::min(end, endTo); ++index) {
      within(std::to_string(index), [&] { compare(from[index], to[index]); });
    }
    for (std::size_t index = end; index > endTo; --index) {
      within(std::to_string(index - 1), [&] { note(&from[index - 1], nullptr); });
    }
    for (std::size_t index = end; index < endTo; ++index) {
      within(std::to_string(index), [&] { note(nullptr, &to[index]); });
    }
  }

  const Differing& differing_;
  json::json_pointer path_;
};

}  // namespace

void compareJson(const json& from, const json& to, const Differing& differing) {
  Comparison(differing).compare(from, to);
}

json patchBetween(const json& from, const json& to) {
  json patch = json::array();
  compareJson(from, to, [&](const std::string& path, const json* before, const json* now) {
    json operation = {{"path", path}};
    if (now == nullptr) {
      operation["op"] = "remove";
    } else {
      operation["op"] = before == nullptr ? "add" : "replace";
      operation["value"] = *now;
    }
    patch.push_back(std::move(operation));
  });
  return patch;
}

}  // namespace lineup
