#pragma once

#include <any>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Base/Selector.h"

namespace zqcore::platform {

/// What a notification center hands out. It is an object, so that it can be the sender of a selector.
class ZQ_EXPORT NSNotification final : public NSObject {
  public:
    using UserInfo = std::map<std::string, std::any>;
    NSNotification(std::string name, std::shared_ptr<NSObject> object, UserInfo userInfo);

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    /// Whom it is about; may be null.
    [[nodiscard]] const std::shared_ptr<NSObject>& object() const noexcept { return object_; }
    [[nodiscard]] const UserInfo& userInfo() const noexcept { return userInfo_; }

  private:
    std::string name_;
    std::shared_ptr<NSObject> object_;
    UserInfo userInfo_;
};

/// Tells observers inside the process. Posting is synchronous, in the order of registration.
/// Threads: any; observers run on the thread that posts, under no lock. Lifetime: neither observer nor object
/// is kept; a closure is kept until its token is removed. Failure: an observer that throws costs one log line
/// and the others are still told.
class ZQ_EXPORT NSNotificationCenter final {
  public:
    [[nodiscard]] static NSNotificationCenter& defaultCenter();
    NSNotificationCenter();
    ~NSNotificationCenter();
    NSNotificationCenter(const NSNotificationCenter&) = delete;
    NSNotificationCenter& operator=(const NSNotificationCenter&) = delete;

    using Block = std::function<void(const NSNotification&)>;
    /// Calls `block` for `name` (absent: every name) about `object` (null: anyone). Gives the token for
    /// `removeObserver`, which the center holds too.
    std::shared_ptr<NSObject> addObserverForName(std::optional<std::string> name,
                                                 const std::shared_ptr<NSObject>& object, Block block);
    /// Performs `selector` on the observer with the notification as sender, for as long as it lives.
    void addObserver(const std::shared_ptr<NSObject>& observer, const Selector& selector,
                     std::optional<std::string> name, const std::shared_ptr<NSObject>& object = nullptr);
    /// Ends all observations of that observer or token; one under way on this thread is the last.
    void removeObserver(const std::shared_ptr<NSObject>& observer);
    /// The same for an object that is on its way out and whose weak references read nothing.
    void removeObserver(const NSObject* observer);

    void postNotificationName(std::string_view name, const std::shared_ptr<NSObject>& object = nullptr,
                              NSNotification::UserInfo userInfo = {});

  private:
    struct Observation;
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace zqcore::platform
