#include "Platform/Foundation/NSUserDefaults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <map>
#include <mutex>
#include <vector>

#include "Platform/Base/Clock.h"
#include "Platform/Base/NSLog.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/Linux/FileSupport.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NSSearchPath.h"
#include "Platform/Foundation/PropertyList.h"

namespace zqcore::platform {

namespace {

constexpr std::chrono::milliseconds kWriteDelay{500};

// What the process's own lock on a file can't give: order among its own threads comes from a mutex.
class FileLock final {
  public:
    explicit FileLock(const std::string& path)
        : file_(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600)) {
        if (!file_) return;
        int result = 0;
        // The holder works for some milliseconds, and the kernel lets go for one that dies.
        while ((result = ::flock(file_.get(), LOCK_EX)) != 0 && errno == EINTR) {
        }
        held_ = result == 0;
    }
    explicit operator bool() const noexcept { return held_; }

  private:
    posix::Descriptor file_;
    bool held_ = false;
};

std::string stamp(Date date) {
    const auto seconds =
        static_cast<std::time_t>(std::chrono::floor<std::chrono::seconds>(date).time_since_epoch().count());
    std::tm fields{};
    ::gmtime_r(&seconds, &fields);
    char text[32];
    const std::size_t size = std::strftime(text, sizeof text, "%Y-%m-%d--%H-%M-%S", &fields);
    return {text, size};
}

double leadingNumber(const std::string& text) {
    // strtod follows the locale of the process; settings don't.
    static const locale_t neutral = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return ::strtod_l(text.c_str(), nullptr, neutral);
}

}  // namespace

/// What stands behind all objects of one file in this process.
class NSUserDefaults::Store final : public std::enable_shared_from_this<Store> {
  public:
    static std::shared_ptr<Store> forPath(const std::string& path) {
        auto& all = registry();
        const std::lock_guard lock(all.mutex);
        auto& known = all.stores[path];
        if (auto store = known.lock()) return store;
        auto store = std::make_shared<Store>(path);
        known = store;
        return store;
    }

    explicit Store(std::string path) : path_(std::move(path)) { refresh(); }

    [[nodiscard]] const std::string& path() const noexcept { return path_; }

    std::optional<Value> object(std::string_view key) const {
        const std::lock_guard lock(mutex_);
        const Value* value = values_.find(key);
        if (!value) return std::nullopt;
        return *value;
    }

    Value::Dictionary all() const {
        const std::lock_guard lock(mutex_);
        return values_;
    }

    void set(Value value, std::string_view key) {
        const std::lock_guard lock(mutex_);
        apply(values_, std::string(key), value);
        pending_[std::string(key)] = std::move(value);
        if (writeIsDue_) return;
        writeIsDue_ = true;
        DispatchQueue::global(DispatchQoS::utility)
            ->after(DispatchTime::now(kWriteDelay), [weak = weak_from_this()] {
                if (const auto store = weak.lock()) store->synchronize();
            });
    }

    bool synchronize() {
        const std::lock_guard one(fileMutex_);
        std::map<std::string, Value, std::less<>> changes;
        {
            const std::lock_guard lock(mutex_);
            writeIsDue_ = false;
            changes = std::exchange(pending_, {});
        }
        if (changes.empty()) return refresh();
        if (write(changes)) return true;
        const std::lock_guard lock(mutex_);
        // What was set meanwhile is newer than what failed.
        pending_.merge(changes);
        return false;
    }

    /// Writes if there is something to write.
    void flush() {
        {
            const std::lock_guard lock(mutex_);
            if (pending_.empty()) return;
        }
        synchronize();
    }

    static void flushAll() {
        std::vector<std::shared_ptr<Store>> living;
        {
            auto& all = registry();
            const std::lock_guard lock(all.mutex);
            for (const auto& [path, weak] : all.stores) {
                if (auto store = weak.lock()) living.push_back(std::move(store));
            }
        }
        for (const auto& store : living) store->flush();
    }

  private:
    struct Registry {
        std::mutex mutex;
        std::map<std::string, std::weak_ptr<Store>> stores;
    };

    static Registry& registry() {
        // Never ended: the flush at exit and late threads still need it.
        static Registry& all = *[] {
            std::atexit([] { flushAll(); });
            return new Registry;
        }();
        return all;
    }

    static void apply(Value::Dictionary& values, const std::string& key, const Value& value) {
        if (value.isNull()) {
            values.erase(key);
        } else {
            values.set(key, value);
        }
    }

    /// Takes over what the file holds, with what is still to be written on top.
    void adopt(Value::Dictionary values) {
        const std::lock_guard lock(mutex_);
        for (const auto& [key, value] : pending_) apply(values, key, value);
        values_ = std::move(values);
    }

    /// Reads the file without a lock: it is only ever replaced as a whole.
    bool refresh() {
        auto bytes = posix::readFile(path_);
        if (bytes) {
            if (auto value = PropertyList::read(*bytes); value && value->asDictionary()) {
                adopt(std::move(*value->asDictionary()));
                return true;
            }
            // Only who holds the lock may judge a file and set it aside.
            return write({});
        }
        if (bytes.error().code() == NSFileReadNoSuchFileError) {
            adopt({});
            return true;
        }
        NSLog("NSUserDefaults: " + bytes.error().description());
        return false;
    }

    bool write(const std::map<std::string, Value, std::less<>>& changes) {
        auto made = NSFileManager::defaultManager().createDirectoryAtPath(
            stringByDeletingLastPathComponent(path_), /*withIntermediateDirectories=*/true);
        if (!made) return failed(made.error());
        const FileLock lock(path_ + ".lock");
        if (!lock) return failed(posix::fileError(errno, path_ + ".lock", posix::Access::changing));
        Value::Dictionary values;
        if (!readUnderLock(values)) return false;
        for (const auto& [key, value] : changes) apply(values, key, value);
        if (!changes.empty()) {
            const auto bytes = PropertyList::write(Value(values), PropertyList::Format::binary);
            if (!bytes) return failed(bytes.error());
            // The lock makes one name enough, so a process that is killed here leaves at most this one file.
            const auto replaced =
                posix::replaceFile(path_, path_ + ".new", bytes->view(), 0600, /*durable=*/true);
            if (!replaced) return failed(replaced.error());
        }
        adopt(std::move(values));
        return true;
    }

    bool readUnderLock(Value::Dictionary& values) {
        const auto bytes = posix::readFile(path_);
        if (!bytes) {
            return bytes.error().code() == NSFileReadNoSuchFileError || failed(bytes.error());
        }
        auto value = PropertyList::read(*bytes);
        if (value && value->asDictionary()) {
            values = std::move(*value->asDictionary());
            return true;
        }
        return setAside(value ? "no dictionary" : value.error().localizedDescription());
    }

    bool setAside(const std::string& reason) {
        const std::string base = path_ + ".damaged-" + stamp(Clock::current().wallNow());
        std::string target = base;
        for (int number = 2; NSFileManager::defaultManager().fileExistsAtPath(target); ++number) {
            target = base + " " + std::to_string(number);
        }
        const auto moved = NSFileManager::defaultManager().moveItemAtPath(path_, target);
        if (!moved) return failed(moved.error());
        NSLog("NSUserDefaults: " + path_ + " is damaged (" + reason + "), set aside as " + target);
        return true;
    }

    static bool failed(const NSError& error) {
        NSLog("NSUserDefaults: " + error.description());
        return false;
    }

    const std::string path_;
    std::mutex fileMutex_;  // one write at a time; taken before mutex_
    mutable std::mutex mutex_;
    Value::Dictionary values_;
    std::map<std::string, Value, std::less<>> pending_;
    bool writeIsDue_ = false;
};

NSUserDefaults::NSUserDefaults(std::shared_ptr<Store> store) : store_(std::move(store)) {}

// Before the store can go, so that whoever opens the file again meanwhile gets this same store.
NSUserDefaults::~NSUserDefaults() { store_->flush(); }

std::string NSUserDefaults::pathForIdentifier(std::string_view identifier) {
    const auto folders =
        NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory::library, NSUserDomainMask, true);
    const std::string library = folders.empty() ? std::string() : folders.front();
    return stringByAppendingPathComponent(library, "/Preferences/" + std::string(identifier) + ".plist");
}

const std::shared_ptr<NSUserDefaults>& NSUserDefaults::standardUserDefaults() {
    // Never ended: other statics may still write when they end.
    static const auto& standard = *new std::shared_ptr<NSUserDefaults>([] {
        std::string identifier = NSBundle::mainBundle()->bundleIdentifier();
        if (identifier.empty()) identifier = NSProcessInfo::processInfo().processName();
        return atPath(pathForIdentifier(identifier));
    }());
    return standard;
}

std::shared_ptr<NSUserDefaults> NSUserDefaults::initWithSuiteName(std::string_view identifier) {
    if (identifier.empty() ||
        identifier.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) {
        return nullptr;
    }
    return atPath(pathForIdentifier(identifier));
}

std::shared_ptr<NSUserDefaults> NSUserDefaults::atPath(std::string_view path) {
    return std::shared_ptr<NSUserDefaults>(
        new NSUserDefaults(Store::forPath(stringByAppendingPathComponent(path, ""))));
}

std::optional<Value> NSUserDefaults::objectForKey(std::string_view key) const { return store_->object(key); }

double NSUserDefaults::doubleForKey(std::string_view key) const {
    const auto value = store_->object(key);
    if (!value) return 0;
    if (const auto number = value->numberAsDouble()) return *number;
    return value->asString() ? leadingNumber(*value->asString()) : 0;
}

Value::Dictionary NSUserDefaults::dictionaryRepresentation() const { return store_->all(); }

void NSUserDefaults::setObject(Value value, std::string_view key) {
    const Value::Dictionary entry{{std::string(key), value}};
    const auto wrong = value.isNull() ? std::nullopt : PropertyList::whyInvalid(Value(entry));
    if (wrong) {
        NSLog("NSUserDefaults: no property list can hold " + *wrong);
        return;
    }
    store_->set(std::move(value), key);
}

bool NSUserDefaults::synchronize() { return store_->synchronize(); }

const std::string& NSUserDefaults::path() const noexcept { return store_->path(); }

}  // namespace zqcore::platform
