#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// The settings of an application: one property list, LIBRARY/Preferences/IDENTIFIER.plist in the binary
/// form. Time: a change is in the file half a second later (`Clock::current()`), at `synchronize`, or at
/// exit. Threads: any. Own writes are seen at once on every thread, those of other processes after
/// `synchronize`. Processes: each write merges into what the file holds then, under a lock file beside it;
/// who writes different keys loses nothing. The file is replaced as a whole and has reached the disk when a
/// write is over. Lifetime: two objects for one file share their content. Failure: one line by `NSLog`. A
/// damaged file is set aside under a dated name and the store starts empty; one that can't be read is left
/// alone and nothing is written.
class ZQ_EXPORT NSUserDefaults final {
  public:
    /// The running application's own settings; without an identifier the process's name stands for it.
    [[nodiscard]] static const std::shared_ptr<NSUserDefaults>& standardUserDefaults();
    /// The settings of the application of that identifier; a null pointer for an empty one, or one with a
    /// slash.
    [[nodiscard]] static std::shared_ptr<NSUserDefaults> initWithSuiteName(std::string_view identifier);
    /// The settings in a file of any name.
    [[nodiscard]] static std::shared_ptr<NSUserDefaults> atPath(std::string_view path);

    ~NSUserDefaults();

    [[nodiscard]] std::optional<Value> objectForKey(std::string_view key) const;
    /// 0 if nothing is stored; booleans are 1 and 0, texts are read by their leading number; other kinds are
    /// 0.
    [[nodiscard]] double doubleForKey(std::string_view key) const;
    /// A copy of all settings.
    [[nodiscard]] Value::Dictionary dictionaryRepresentation() const;

    /// No object (null) removes the key. What no property list can hold is refused with a line.
    void setObject(Value value, std::string_view key);
    void setInteger(std::int64_t value, std::string_view key) { setObject(Value(value), key); }
    void setDouble(double value, std::string_view key) { setObject(Value(value), key); }
    void setBool(bool value, std::string_view key) { setObject(Value(value), key); }
    void removeObjectForKey(std::string_view key) { setObject(Value(), key); }

    /// Writes what is still to be written and reads what others have written; false if that failed. What
    /// could not be written stays in memory and is tried again next time.
    bool synchronize();

    [[nodiscard]] const std::string& path() const noexcept;

  private:
    class Store;
    explicit NSUserDefaults(std::shared_ptr<Store> store);
    static std::string pathForIdentifier(std::string_view identifier);

    std::shared_ptr<Store> store_;
};

}  // namespace zqcore::platform
