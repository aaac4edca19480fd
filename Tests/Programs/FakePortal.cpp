// A desktop portal with a file chooser that does as told: prints what it was asked for, and answers.
// Usage: FakePortal choose URI | cancel | leave
#include <systemd/sd-bus.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

std::string mode;
std::string uri;

void printOptions(sd_bus_message* call) {
    sd_bus_message_enter_container(call, 'a', "{sv}");
    while (sd_bus_message_enter_container(call, 'e', "sv") > 0) {
        const char* key = nullptr;
        const char* type = nullptr;
        sd_bus_message_read(call, "s", &key);
        sd_bus_message_peek_type(call, nullptr, &type);
        sd_bus_message_enter_container(call, 'v', type);
        const char* text = nullptr;
        int flag = 0;
        const void* bytes = nullptr;
        size_t size = 0;
        if (std::string(type) == "s" && sd_bus_message_read(call, "s", &text) >= 0)
            std::printf("%s=%s\n", key, text);
        if (std::string(type) == "b" && sd_bus_message_read(call, "b", &flag) >= 0)
            std::printf("%s=%d\n", key, flag);
        if (std::string(type) == "ay" && sd_bus_message_read_array(call, 'y', &bytes, &size) >= 0) {
            std::printf("%s=%s (%zu)\n", key, static_cast<const char*>(bytes), size);
        }
        sd_bus_message_exit_container(call);
        sd_bus_message_exit_container(call);
    }
    sd_bus_message_exit_container(call);
}

int openFile(sd_bus_message* call, void*, sd_bus_error*) {
    const char* title = nullptr;
    sd_bus_message_read(call, "ss", nullptr, &title);
    std::printf("title=%s\n", title);
    printOptions(call);
    std::printf("end\n");
    std::fflush(stdout);

    std::string sender = sd_bus_message_get_sender(call) + 1;
    std::replace(sender.begin(), sender.end(), '.', '_');
    const auto path = "/org/freedesktop/portal/desktop/request/" + sender + "/zqcore";
    sd_bus_reply_method_return(call, "o", path.c_str());
    auto* bus = sd_bus_message_get_bus(call);
    if (mode == "leave") {
        sd_bus_flush(bus);
        std::exit(0);
    }
    sd_bus_message* response = nullptr;
    sd_bus_message_new_signal(bus, &response, path.c_str(), "org.freedesktop.portal.Request", "Response");
    if (mode == "choose") {
        sd_bus_message_append(response, "ua{sv}", 0, 2, "choices", "a(ss)", 0, "uris", "as", 1, uri.c_str());
    } else {
        sd_bus_message_append(response, "ua{sv}", 1, 0);
    }
    sd_bus_send(bus, response, nullptr);
    sd_bus_message_unref(response);
    return 1;
}

constexpr sd_bus_vtable kFileChooser[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("OpenFile", "ssa{sv}", "o", openFile, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

}  // namespace

int main(int argc, char** argv) {
    mode = argc > 1 ? argv[1] : "cancel";
    uri = argc > 2 ? argv[2] : "";
    sd_bus* bus = nullptr;
    if (sd_bus_open_user(&bus) < 0) return 1;
    sd_bus_add_object_vtable(bus, nullptr, "/org/freedesktop/portal/desktop",
                             "org.freedesktop.portal.FileChooser", kFileChooser, nullptr);
    if (sd_bus_request_name(bus, "org.freedesktop.portal.Desktop", 0) < 0) return 1;
    std::printf("ready\n");
    std::fflush(stdout);
    while (true) {
        const int processed = sd_bus_process(bus, nullptr);
        if (processed < 0) return 1;
        if (processed == 0) sd_bus_wait(bus, UINT64_MAX);
    }
}
