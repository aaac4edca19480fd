#include <string>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Output.h"
#include "Classes/AppleScript/RequestCommand/ASRequestCatalogue.h"

namespace zq {

using namespace zqcore;

namespace {

std::string_view textOf(ASRequestEntry::Addressee addressee) {
    switch (addressee) {
        case ASRequestEntry::Addressee::application:
            return "Orbel";
        case ASRequestEntry::Addressee::helper:
            return "OrbelHelper";
        case ASRequestEntry::Addressee::either:
            return "either";
    }
    return "";
}

Value fieldsOf(const JSONRecordInfo& record) {
    Value::Dictionary fields;
    forEachField(record,
                 [&](std::string_view name, std::string_view type) { fields.set(std::string(name), type); });
    return {std::move(fields)};
}

int run(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {}, {"[PATH]"});
    if (!parsed) return kUsage;
    Value::Array list;
    for (const auto& entry : requestCatalogue()) {
        if (!parsed->words().empty() && parsed->words()[0] != entry.path) continue;
        Value::Dictionary one;
        one.set("path", entry.path);
        one.set("type", entry.typeName);
        one.set("to", textOf(entry.addressee));
        const auto minVersion = entry.minVersion();
        one.set("minVersion", minVersion ? Value(*minVersion) : Value());
        one.set("request", fieldsOf(*entry.request));
        one.set("response", fieldsOf(*entry.response));
        list.emplace_back(std::move(one));
    }
    if (list.empty())
        return complain("no request has the path \"" + parsed->words()[0] + "\"", kAnsweredWithError);
    return finishWith(Value(std::move(list)));
}

constexpr Offer kOffers[] = {
    {"",
     "translate ocr open hotkey toggle selected/text current/app info launch hotkey/fetch hotkey/handle"}};

}  // namespace

const Command kListCommand = {
    .name = "list",
    .summary = "print the catalogue of requests",
    .help =
        "usage: zq list [PATH]\n\n"
        "Prints a JSON array of all requests, or of those with that path: path, type, to whom, the lowest\n"
        "version that knows it, and the fields of request and response.\n",
    .codes = exitCodes(kAnsweredWithError),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
