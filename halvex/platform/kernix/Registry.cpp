#include "halvex/platform/kernix/Registry.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <boost/property_tree/info_parser.hpp>
#include <boost/property_tree/ptree.hpp>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

#include "halvex/platform/kernix/Logging.h"
#include "halvex/platform/os/File.h"

namespace REG {
namespace {

using boost::property_tree::ptree;
namespace fs = std::filesystem;

constexpr const char* kSource = "REG";

// The file holds these words alone as keys of the tree; the names that callers choose are data. No name can then be
// taken for a path or a directive.
//   key "SOFTWARE\\Maker\\Product"
//   {
//       value Name
//       {
//           long 3            (or: string "text")
//       }
//   }
constexpr const char* kKey = "key";
constexpr const char* kValue = "value";
constexpr const char* kLong = "long";
constexpr const char* kString = "string";

fs::path registryFile() {
    const auto environment = [](const char* name) {
        const char* text = std::getenv(name);
        return fs::path(text != nullptr ? text : "");
    };
    if (fs::path file = environment("HALVEX_REGISTRY"); !file.empty()) return file;
    if (const fs::path folder = environment("XDG_CONFIG_HOME"); folder.is_absolute()) {
        return folder / "halvex" / "registry.info";
    }
    if (const fs::path home = environment("HOME"); home.is_absolute()) {
        return home / ".config" / "halvex" / "registry.info";
    }
    return {};
}

/// A file descriptor of its own.
class Descriptor {
public:
    Descriptor(const fs::path& path, int flags) : m_number(::open(path.c_str(), flags | O_CLOEXEC, 0666)) {}
    ~Descriptor() {
        if (m_number >= 0) ::close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int number() const { return m_number; }
    [[nodiscard]] bool isOpen() const { return m_number >= 0; }

private:
    int m_number;
};

ptree* find(ptree& parent, const char* word, std::string_view data) {
    for (auto& [key, child] : parent) {
        if (key == word && child.data() == data) return &child;
    }
    return nullptr;
}

ptree& findOrAdd(ptree& parent, const char* word, std::string_view data) {
    if (ptree* found = find(parent, word, data)) return *found;
    return parent.push_back({word, ptree(std::string(data))})->second;
}

std::optional<Value> valueOf(const ptree& entry) {
    if (const auto text = entry.get_child_optional(kString)) return text->data();
    if (const auto text = entry.get_child_optional(kLong)) {
        std::int32_t number = 0;
        const char* const end = text->data().data() + text->data().size();
        const auto [stop, error] = std::from_chars(text->data().data(), end, number);
        if (error == std::errc() && stop == end) return number;
    }
    return std::nullopt;
}

class FileStore final : public Store {
public:
    std::optional<Value> read(std::string_view key, std::string_view name) override try {
        const fs::path file = registryFile();
        ptree tree;
        if (file.empty() || !load(file, tree)) return std::nullopt;
        ptree* const folder = find(tree, kKey, key);
        ptree* const entry = folder != nullptr ? find(*folder, kValue, name) : nullptr;
        return entry != nullptr ? valueOf(*entry) : std::nullopt;
    } catch (const std::exception& error) {
        report(error.what());
        return std::nullopt;
    }

    bool write(std::string_view key, std::string_view name, const Value& value) override try {
        const fs::path file = registryFile();
        if (file.empty()) return false;
        std::error_code ignored;  // a folder that is missing shows when the lock cannot be made
        if (file.has_parent_path()) fs::create_directories(file.parent_path(), ignored);
        const Descriptor lock(withSuffix(file, ".lock"), O_RDWR | O_CREAT);
        // Each call has a descriptor of its own, so the lock holds among threads as among processes.
        if (!lock.isOpen() || !lockExclusively(lock.number())) return false;
        ptree tree;
        if (!load(file, tree)) return false;
        ptree& entry = findOrAdd(findOrAdd(tree, kKey, key), kValue, name);
        entry.clear();
        entry.data() = name;
        if (const auto* number = std::get_if<std::int32_t>(&value)) {
            entry.push_back({kLong, ptree(std::to_string(*number))});
        } else {
            entry.push_back({kString, ptree(std::get<std::string>(value))});
        }
        return replace(file, tree);
    } catch (const std::exception& error) {
        report(error.what());
        return false;
    }

private:
    static fs::path withSuffix(fs::path file, const char* suffix) { return file += suffix; }

    static bool lockExclusively(int descriptor) {
        int result = 0;
        do {
            result = ::flock(descriptor, LOCK_EX);
        } while (result != 0 && errno == EINTR);
        return result == 0;
    }

    /// False when there is a file but it cannot be read or understood. No file: an empty tree.
    bool load(const fs::path& file, ptree& tree) {
        std::error_code error;
        const fs::file_status status = fs::status(file, error);
        if (status.type() == fs::file_type::not_found) {
            m_reported = false;
            return true;
        }
        std::ifstream stream;
        if (fs::is_regular_file(status)) stream.open(file, std::ios::binary);  // a pipe would have to be waited for
        std::ostringstream text;
        if (!stream.is_open() || (stream.peek() != EOF && !(text << stream.rdbuf()))) {
            report(file.string() + ": cannot be read");
            return false;
        }
        std::istringstream lines(text.str());
        // A directive of the format would pull other files in; nothing written here begins a line with its mark.
        for (std::string line; std::getline(lines, line);) {
            const std::size_t first = line.find_first_not_of(" \t\r\v\f");
            if (first != std::string::npos && line[first] == '#') {
                report(file.string() + ": directives are not allowed");
                return false;
            }
        }
        lines.clear();
        lines.seekg(0);
        try {
            boost::property_tree::read_info(lines, tree);
        } catch (const boost::property_tree::ptree_error& damage) {
            report(file.string() + ": " + damage.what());
            return false;
        }
        m_reported = false;
        return true;
    }

    static bool replace(const fs::path& file, const ptree& tree) {
        std::ostringstream stream;
        boost::property_tree::write_info(stream, tree);
        const std::string text = stream.str();
        return !os::replaceFile(file.string(), {reinterpret_cast<const unsigned char*>(text.data()), text.size()});
    }

    void report(std::string_view what) {
        if (!m_reported.exchange(true)) ILogging::getInstance().Log(kSource, ILogging::kError, "{}", what);
    }

    std::atomic<bool> m_reported{false};  ///< the damage that lasts has been logged
};

FileStore& fileStore() {
    static FileStore store;
    return store;
}

os::Replaceable<Store>& currentStore() {
    static os::Replaceable<Store> store(&fileStore());
    return store;
}

template <class Type>
Type get(std::string_view key, std::string_view name, Type defaultValue, bool create) {
    Store& store = currentStore().get();
    std::optional<Value> value = store.read(key, name);
    if (!value && create) store.write(key, name, defaultValue);
    Type* const held = value ? std::get_if<Type>(&*value) : nullptr;
    return held != nullptr ? std::move(*held) : defaultValue;
}

}  // namespace

Store::~Store() = default;

Store* setStore(Store* store) {
    return currentStore().exchange(store != nullptr ? store : &fileStore());
}

std::int32_t GetLong(std::string_view key, std::string_view name, std::int32_t defaultValue, bool create) {
    return get<std::int32_t>(key, name, defaultValue, create);
}

std::string GetString(std::string_view key, std::string_view name, std::string_view defaultValue, bool create) {
    return get<std::string>(key, name, std::string(defaultValue), create);
}

bool WriteLong(std::string_view key, std::string_view name, std::int32_t value) {
    return currentStore().get().write(key, name, value);
}

bool WriteString(std::string_view key, std::string_view name, std::string_view value) {
    return currentStore().get().write(key, name, std::string(value));
}

}  // namespace REG
