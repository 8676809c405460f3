#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "halvex/platform/Export.h"
#include "halvex/platform/os/Replaceable.h"

/// Named values that outlive the process, each under a key such as "SOFTWARE\Maker\Product" and a name. A value is a
/// 32-bit integer or a text; one written with the other type replaces it. Any thread, any process.
///
/// They are kept in one file: the one that HALVEX_REGISTRY names, else halvex/registry.info in the user's configuration
/// folder (XDG_CONFIG_HOME, else ~/.config). It is created at the first write and replaced as a whole (new file, fsync,
/// rename), so that a reader sees the values before a write or after it. Writers take turns through a lock on a file
/// beside it with ".lock" appended. A file that cannot be read or understood gives every reader its default (one log
/// entry at level 3 until it reads again), and is never overwritten: writes fail.
namespace REG {

using Value = std::variant<std::int32_t, std::string>;

/// Where values are kept. Called from any thread at once.
class HALVEX_EXPORT Store {
public:
    virtual ~Store();
    /// Empty when there is no such value or it cannot be read.
    virtual std::optional<Value> read(std::string_view key, std::string_view name) = 0;
    /// False, with nothing changed, when the value could not be stored.
    virtual bool write(std::string_view key, std::string_view name, const Value& value) = 0;
};

/// Puts `store` in the place of the file and returns the one before; null brings the file back. The caller keeps the
/// object alive as long as it is installed.
HALVEX_EXPORT Store* setStore(Store* store);

/// Installs a store for a scope.
class ScopedStore : public os::ScopedService<Store> {
public:
    explicit ScopedStore(Store& store) : ScopedService(&setStore, store) {}
};

/// The value, or `defaultValue` when it is missing, unreadable or of the other type. With `create` a missing value is
/// written with its default, so that an operator finds it in the file; whether that worked is not reported.
HALVEX_EXPORT std::int32_t GetLong(std::string_view key, std::string_view name, std::int32_t defaultValue,
                                   bool create = false);
HALVEX_EXPORT std::string GetString(std::string_view key, std::string_view name, std::string_view defaultValue,
                                    bool create = false);

/// False when the value could not be stored; the old one then stays.
HALVEX_EXPORT bool WriteLong(std::string_view key, std::string_view name, std::int32_t value);
HALVEX_EXPORT bool WriteString(std::string_view key, std::string_view name, std::string_view value);

}  // namespace REG
