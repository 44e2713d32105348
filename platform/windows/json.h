#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// As much of JSON as the presenter's line needs.

namespace tarnel {

/// Writes one object, member by member. What is no UTF-8 in a text is replaced.
class JsonObject {
  public:
    JsonObject& add(std::string_view name, std::int64_t number);
    JsonObject& add(std::string_view name, bool truth);
    JsonObject& add(std::string_view name, std::string_view text);
    JsonObject& add(std::string_view name, const std::vector<std::string>& texts);
    JsonObject& add(std::string_view name, const std::vector<JsonObject>& objects);

    // What would be taken for something else.
    JsonObject& add(std::string_view name, int number) { return add(name, std::int64_t{number}); }

    JsonObject& add(std::string_view name, const char* text) {
        return add(name, std::string_view(text));
    }

    std::string text() const { return '{' + members_ + '}'; }

  private:
    void begin(std::string_view name);

    std::string members_;
};

/// A member of an object that was read: a number or a text.
struct JsonMember {
    std::string name;
    std::int64_t number = 0;
    std::string text;
};

/// The members of an object of whole numbers and texts, which is all of `line`; nothing for
/// anything else.
std::optional<std::vector<JsonMember>> read_json(std::string_view line);

} // namespace tarnel
