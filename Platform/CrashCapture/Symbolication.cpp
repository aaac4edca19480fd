#include "Platform/CrashCapture/Symbolication.h"

#include <algorithm>
#include <set>
#include <vector>

namespace zqcore::platform::crash {

namespace {

struct Image {
    std::uint64_t address;
    std::uint64_t size;
    std::string path;
    std::string uuid;
};

std::uint64_t number(const Value::Dictionary& dictionary, std::string_view key) {
    const Value* value = dictionary.find(key);
    return value ? value->asUInt64().value_or(0) : 0;
}

std::string text(const Value::Dictionary& dictionary, std::string_view key) {
    const Value* value = dictionary.find(key);
    return value && value->asString() ? *value->asString() : std::string();
}

Value::Dictionary* dictionaryIn(Value::Dictionary& from, std::string_view key) {
    Value* value = from.find(key);
    return value ? value->asDictionary() : nullptr;
}

Value::Array* arrayIn(Value::Dictionary& from, std::string_view key) {
    Value* value = from.find(key);
    return value ? value->asArray() : nullptr;
}

std::vector<Image> imagesOf(Value::Dictionary& report) {
    std::vector<Image> images;
    Value::Array* list = arrayIn(report, "binary_images");
    if (!list) return images;
    for (const Value& entry : *list) {
        const Value::Dictionary* image = entry.asDictionary();
        if (!image) continue;
        images.push_back({number(*image, "image_addr"), number(*image, "image_size"), text(*image, "name"),
                          text(*image, "uuid")});
    }
    return images;
}

const Image* imageAt(const std::vector<Image>& images, std::uint64_t address) {
    const auto found = std::ranges::find_if(images, [address](const Image& image) {
        return address >= image.address && address - image.address < image.size;
    });
    return found == images.end() ? nullptr : &*found;
}

// Symbols are looked up through a file only once an address in it turns up.
class Frames final {
  public:
    explicit Frames(std::vector<Image> images) : images_(std::move(images)) {}

    void name(Value::Dictionary& thread, bool firstIsReturnAddress) {
        Value::Dictionary* backtrace = dictionaryIn(thread, "backtrace");
        Value::Array* contents = backtrace ? arrayIn(*backtrace, "contents") : nullptr;
        if (!contents) return;
        bool isReturnAddress = firstIsReturnAddress;
        for (Value& entry : *contents) {
            if (Value::Dictionary* frame = entry.asDictionary()) nameFrame(*frame, isReturnAddress);
            isReturnAddress = true;
        }
    }

  private:
    void nameFrame(Value::Dictionary& frame, bool isReturnAddress) {
        std::uint64_t address = number(frame, "instruction_addr");
        // A return address may already belong to the next function, if the call was the last of its own.
        if (isReturnAddress && address > 0) --address;
        const Image* image = imageAt(images_, address);
        if (!image) return;
        frame.set("object_addr", image->address);
        frame.set("object_name", image->path);
        if (!source_ && !sought_) source_ = SymbolSource::open();
        sought_ = true;
        if (!source_) return;
        if (known_.insert(image).second) source_->addImage(image->address, image->path, image->uuid);
        const std::optional<Symbol> symbol = source_->symbolAt(address);
        if (!symbol) return;
        frame.set("symbol_addr", symbol->address);
        frame.set("symbol_name", demangledSymbol(symbol->name));
    }

    std::vector<Image> images_;
    std::set<const Image*> known_;
    std::unique_ptr<SymbolSource> source_;
    bool sought_ = false;
};

void nameThreads(Value::Dictionary& crash, Frames& frames) {
    bool isException = false;
    if (Value::Dictionary* error = dictionaryIn(crash, "error")) {
        isException = text(*error, "type") == "cpp_exception";
        if (Value::Dictionary* exception = dictionaryIn(*error, "cpp_exception")) {
            const std::string type = text(*exception, "name");
            if (!type.empty()) exception->set("name", demangledType(type));
        }
    }
    Value::Array* threads = arrayIn(crash, "threads");
    if (!threads) return;
    for (Value& entry : *threads) {
        Value::Dictionary* thread = entry.asDictionary();
        if (!thread) continue;
        const Value* crashed = thread->find("crashed");
        frames.name(*thread, isException && crashed && *crashed == Value(true));
    }
}

}  // namespace

void symbolicate(Value::Dictionary& report) {
    Frames frames(imagesOf(report));
    if (Value::Dictionary* crash = dictionaryIn(report, "crash")) nameThreads(*crash, frames);
    Value::Dictionary* recrash = dictionaryIn(report, "recrash_report");
    if (Value::Dictionary* crash = recrash ? dictionaryIn(*recrash, "crash") : nullptr)
        nameThreads(*crash, frames);
}

}  // namespace zqcore::platform::crash
