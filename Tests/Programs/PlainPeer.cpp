// A peer that knows nothing of this library, only the bus: plain sd-bus in either role.
// Usage: PlainPeer serve IDENTIFIER PATH      prints "serving"; answers `request(s)` with the same text, and
//                                             "error NAME" and "answer TEXT" with that
//        PlainPeer call IDENTIFIER PATH TEXT  prints the answer, or "error NAME" and the reason
//        PlainPeer foreign IDENTIFIER PATH TEXT  calls as the user "nobody"; run by root
//        PlainPeer files IDENTIFIER PATH      serves `exchange(v)` with unsealed files for answers
//        PlainPeer silent IDENTIFIER PATH     prints the member of every call and answers no introspection
//        PlainPeer file IDENTIFIER PATH       calls `exchange(v)` with an unsealed file
//        PlainPeer post NAME OBJECT JSON      posts a notification with the JSON under "request"
#include <sys/mman.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace {

constexpr const char* kInterface = "com.tessara.ZQCore.Scripting";
constexpr unsigned kNobody = 65534;

int onRequest(sd_bus_message* message, void*, sd_bus_error* error) {
    const char* text = nullptr;
    if (sd_bus_message_read(message, "s", &text) < 0) return -EINVAL;
    // The order may stand inside a JSON text; then it ends with the quote.
    const std::string_view all = text;
    const auto after = [all](std::string_view order) {
        const auto at = all.find(order);
        const auto rest = at == all.npos ? std::string_view() : all.substr(at + order.size());
        return std::string(rest.substr(0, rest.find('"')));
    };
    if (all.find("error ") != all.npos) return sd_bus_error_set(error, after("error ").c_str(), "on purpose");
    if (all.find("answer ") != all.npos)
        return sd_bus_reply_method_return(message, "s", after("answer ").c_str());
    return sd_bus_reply_method_return(message, "s", text);
}

/// A memory file that its sender can still change.
int unsealedFile() {
    const int file = ::memfd_create("plain", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    return ::write(file, "{}", 2) == 2 ? file : -1;
}

int onExchange(sd_bus_message* message, void*, sd_bus_error*) {
    return sd_bus_reply_method_return(message, "v", "h", unsealedFile());
}

int tellAndKeepSilent(sd_bus_message* message, void*, sd_bus_error*) {
    if (sd_bus_message_is_method_call(message, nullptr, nullptr) <= 0) return 0;
    std::puts(sd_bus_message_get_member(message));
    std::fflush(stdout);
    return sd_bus_message_is_method_call(message, "org.freedesktop.DBus.Introspectable", nullptr);
}

int serve(sd_bus* bus, const char* identifier, const char* path, std::string_view role) {
    static const std::array<sd_bus_vtable, 3> texts{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("request", "s", "s", &onRequest, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};
    static const std::array<sd_bus_vtable, 3> exchange{{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("exchange", "v", "v", &onExchange, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    }};
    const auto& table = role == "files" ? exchange : texts;
    if (role == "silent" && sd_bus_add_filter(bus, nullptr, &tellAndKeepSilent, nullptr) < 0) return 1;
    // Without a path there is an object, but none with the command.
    if (*path && sd_bus_add_object_vtable(bus, nullptr, path, kInterface, table.data(), nullptr) < 0)
        return 1;
    if (sd_bus_request_name(bus, identifier, 0) < 0) return 1;
    std::puts("serving");
    std::fflush(stdout);
    for (;;) {
        const int progress = sd_bus_process(bus, nullptr);
        if (progress < 0) return 1;
        if (progress == 0 && sd_bus_wait(bus, UINT64_MAX) < 0) return 1;
    }
}

int tell(sd_bus_error& error) {
    std::printf("error %s\n%s\n", error.name, error.message);
    sd_bus_error_free(&error);
    return 1;
}

int callWithFile(sd_bus* bus, const char* identifier, const char* path) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    const int called = sd_bus_call_method(bus, identifier, path, kInterface, "exchange", &error, nullptr, "v",
                                          "h", unsealedFile());
    return called < 0 ? tell(error) : 0;
}

int call(sd_bus* bus, const char* identifier, const char* path, const char* text) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* answer = nullptr;
    if (sd_bus_call_method(bus, identifier, path, kInterface, "request", &error, &answer, "s", text) < 0)
        return tell(error);
    const char* result = nullptr;
    const bool isText = sd_bus_message_read(answer, "s", &result) >= 0;
    if (isText) std::printf("%s\n", result);
    sd_bus_message_unref(answer);
    return isText ? 0 : 1;
}

int post(sd_bus* bus, const char* name, const char* object, const char* json) {
    constexpr const char* kCenter = "com.tessara.ZQCore.DistributedNotificationCenter";
    const bool hasObject = *object != '\0';
    const int sent = hasObject ? sd_bus_emit_signal(bus, "/plain", kCenter, "Posted", "sava{sv}", name, 1,
                                                    "s", object, 1, "request", "s", json)
                               : sd_bus_emit_signal(bus, "/plain", kCenter, "Posted", "sava{sv}", name, 0, 1,
                                                    "request", "s", json);
    return sent < 0 || sd_bus_flush(bus) < 0 ? 1 : 0;
}

int play(std::string_view role, sd_bus* bus, int argc, char** argv) {
    if (role == "serve" || role == "files" || role == "silent") return serve(bus, argv[2], argv[3], role);
    if (role == "file") return callWithFile(bus, argv[2], argv[3]);
    if ((role == "call" || role == "foreign") && argc == 5) return call(bus, argv[2], argv[3], argv[4]);
    if (role == "post" && argc == 5) return post(bus, argv[2], argv[3], argv[4]);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    sd_bus* bus = nullptr;
    const std::string_view role = argc < 4 ? "" : argv[1];
    if (role == "foreign" && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) return 2;
    if (role.empty() || sd_bus_open_user(&bus) < 0) return 2;
    const int result = play(role, bus, argc, argv);
    sd_bus_flush_close_unref(bus);
    return result;
}
