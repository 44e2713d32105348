#pragma once

#include "platform/base/types.h"
#include "platform/registry/store.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnel {

using KeyId = std::int64_t;

constexpr KeyId root_id = 1;

struct Value {
    DWORD type = 0;
    std::vector<BYTE> data;
};

/// The keys and values of one hive. All calls give the error codes of the registry functions and
/// may be made from any thread.
class Hive {
  public:
    explicit Hive(HiveKind kind) : kind_(kind), store_(kind) {}

    /// `path`: names between "\", empty for the key itself.
    LONG find_key(KeyId from, std::string_view path, KeyId& key);
    LONG create_key(KeyId from, std::string_view path, KeyId& key, bool& created);
    LONG delete_key(KeyId from, std::string_view path);
    LONG key_at(KeyId key, DWORD index, std::string& name);

    LONG read_value(KeyId key, std::string_view name, Value& value);
    LONG write_value(KeyId key, std::string_view name, DWORD type, std::span<const BYTE> data);
    LONG delete_value(KeyId key, std::string_view name);
    LONG value_at(KeyId key, DWORD index, std::string& name, Value& value);

    /// ERROR_ACCESS_DENIED when the file may only be read.
    LONG check_writable();

    Store& store() { return store_; }

  private:
    const HiveKind kind_;
    Store store_;
};

Hive& user_hive();
Hive& machine_hive();

} // namespace tarnel
