// gallery: what the interface library can show, in a window or as pictures.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/GalleryWindow.h"
#include "Apps/Gallery/Pictures.h"
#include "Apps/Gallery/TipAccount.h"
#include "Platform/AppKit/DefaultDisplay.h"
#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Graphics/NSAppearance.h"
#include "Platform/Lumberjack/DDOSLogger.h"

namespace {

using namespace gallery;

enum ExitCode { kDone = 0, kFailed = 1, kUsage = 2, kNoDisplay = 3, kNotWritten = 5 };

constexpr std::string_view kHelp =
    "gallery shows every component of the interface library in its states.\n\n"
    "usage: gallery [--page NAME] [--light | --dark] [--scale N] [--for SECONDS]\n"
    "       gallery --headless FOLDER [--page NAME]\n"
    "       gallery --tell-tip\n"
    "       gallery --list\n\n"
    "Without --headless a window opens on the display that DISPLAY names: choose a page at the left or by "
    "the\n"
    "arrow keys, and switch between light and dark there. Closing the window ends the program.\n\n"
    "  --page NAME        that page alone; --list names them. May be repeated with --headless\n"
    "  --light, --dark    begins so, whatever the desktop has\n"
    "  --scale N          N pixels a point, 1 or 2, instead of the desktop's\n"
    "  --for SECONDS      closes the window after that time\n"
    "  --headless FOLDER  needs no display: writes each page as PAGE-light@1x.png, PAGE-dark@1x.png and at\n"
    "                     twice the scale (@2x) into the folder, and prints the paths\n"
    "  --tell-tip         plays a tip without a display and tells when it comes, what it says and where\n\n"
    "Exit codes: 0 done, 1 the tip did not come or go, 2 the command line is wrong, 3 there is no display,\n"
    "5 a picture could not be written.\n";

struct Options {
    std::vector<const GalleryPage*> pages;
    std::optional<std::string> folder;
    std::optional<double> seconds;
    std::shared_ptr<const NSAppearance> appearance;
    bool list = false;
    bool tellTip = false;
};

int complain(const std::string& message, ExitCode code) {
    std::fprintf(stderr, "gallery: %s\n", message.c_str());
    return code;
}

/// What is wrong, or empty.
std::string parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--light") {
            options.appearance = NSAppearance::aqua();
        } else if (word == "--dark") {
            options.appearance = NSAppearance::darkAqua();
        } else if (word == "--list") {
            options.list = true;
        } else if (word == "--tell-tip") {
            options.tellTip = true;
        } else if (word != "--page" && word != "--headless" && word != "--for" && word != "--scale") {
            return "what is \"" + word + "\"? gallery --help tells the options";
        } else if (++i == argc) {
            return word + " needs a value";
        } else if (word == "--page") {
            const GalleryPage* page = pageNamed(argv[i]);
            if (!page) return std::string("there is no page \"") + argv[i] + "\"; --list names them";
            options.pages.push_back(page);
        } else if (word == "--scale") {
            const std::string_view scale = argv[i];
            if (scale != "1" && scale != "2") return "--scale is 1 or 2";
            // The display asks the same variable as other toolkits do.
            ::setenv("GDK_SCALE", argv[i], 1);
        } else if (word == "--headless") {
            options.folder = argv[i];
        } else {
            char* end = nullptr;
            options.seconds = std::strtod(argv[i], &end);
            if (*end != '\0' || !(*options.seconds > 0)) return "--for needs a number of seconds above 0";
            // The clock counts nanoseconds and comes to an end.
            options.seconds = std::min(*options.seconds, 1e9);
        }
    }
    return {};
}

int writeAll(const Options& options) {
    const auto all = allPages();
    const std::string failed =
        writePictures(options.pages.empty() ? all : std::span<const GalleryPage* const>(options.pages),
                      *options.folder, [](const std::string& path) { std::puts(path.c_str()); });
    return failed.empty() ? kDone : complain("could not write " + failed, kNotWritten);
}

int openWindow(const Options& options) {
    Display::setDefaultMaker(openDefaultDisplay);
    if (std::dynamic_pointer_cast<HeadlessDisplay>(Display::current()))
        return complain(
            "there is no display to open a window on (DISPLAY names none that answers); gallery --headless "
            "FOLDER writes pictures instead",
            kNoDisplay);
    const auto& application = NSApplication::shared();
    if (options.appearance) application->setAppearance(options.appearance);
    const CGRect room = NSScreen::mainScreen()->visibleFrame();
    const auto window = makeObject<GalleryWindow>(CGPoint{room.origin.x + 80, room.origin.y + 80});
    window->show(options.pages.empty() ? *allPages().front() : *options.pages.front());
    window->makeKeyAndOrderFront();
    application->activate();
    if (options.seconds)
        DispatchQueue::main()->after(DispatchTime::now(std::chrono::duration_cast<Clock::Duration>(
                                         std::chrono::duration<double>(*options.seconds))),
                                     [window] { window->close(); });
    application->run();
    return kDone;
}

}  // namespace

int main(int argc, char** argv) {
    // Standard error is for people here; the log has the journal where there is one.
    if (!std::getenv("ZQ_LOG_TO_STDERR")) DDOSLogger::sharedInstance()->setFallback(-1);
    Options options;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--help") {
            std::fwrite(kHelp.data(), 1, kHelp.size(), stdout);
            return kDone;
        }
    }
    if (const std::string wrong = parse(argc, argv, options); !wrong.empty()) return complain(wrong, kUsage);
    if (options.list) {
        for (const GalleryPage* page : allPages())
            std::printf("%-12.*s %.*s\n", static_cast<int>(page->name.size()), page->name.data(),
                        static_cast<int>(page->title.size()), page->title.data());
        return kDone;
    }
    if (options.tellTip) return tellTip() ? kDone : complain("the tip did not come or go", kFailed);
    return options.folder ? writeAll(options) : openWindow(options);
}
