// Encoding and decoding of an envelope of 300 bytes and of one with 4 MB of base64, beside other parsers that
// fill the same record. Each peer is used as its own documentation recommends for speed: parsers and buffers
// are kept between rounds where it allows so.
#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>

#include <boost/json.hpp>
#include <boost/json/src.hpp>
#include <nlohmann/json.hpp>

#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"

namespace zqcore {
namespace {

using Envelope = OrbelTranslateRequest::RequestValue;

std::shared_ptr<Envelope> makeEnvelope(std::size_t imageBytes) {
    auto envelope = Envelope::make();
    envelope->requestId = "6F9619FF-8B86-D011-B42D-00CF4FC964FF";
    envelope->client = ASClient::make();
    envelope->client->pid = 4711;
    envelope->client->identifier = "com.tessaradev.OrbelHelper";
    envelope->client->name = "OrbelHelper";
    envelope->client->version = "1.5.0";
    envelope->client->build = "1500";
    envelope->path = "translate";
    envelope->body = Envelope::Body::make();
    envelope->body->action = Envelope::TranslateAction::translateText;
    envelope->body->text = "The quick brown fox jumps over 3/4 of the lazy dogs";
    envelope->body->windowLocation = Envelope::WindowLocation::statusIconBottom;
    if (imageBytes == 0) return envelope;
    // Base64 of noise: one character in 64 is a slash.
    constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string image(imageBytes, ' ');
    std::uint64_t state = 88172645463325252U;
    for (char& c : image) {
        state ^= state << 13U;
        state ^= state >> 7U;
        state ^= state << 17U;
        c = digits[state % 64];
    }
    envelope->body->imageBase64 = std::move(image);
    return envelope;
}

const Envelope& envelope(benchmark::State& state) {
    static const auto small = makeEnvelope(0);
    static const auto large = makeEnvelope(4U << 20U);
    return state.range(0) == 0 ? *small : *large;
}

const std::string& text(benchmark::State& state) {
    static const std::string small = *makeEnvelope(0)->encodeToJSONString();
    static const std::string large = *makeEnvelope(4U << 20U)->encodeToJSONString();
    return state.range(0) == 0 ? small : large;
}

void check(const Envelope& read, benchmark::State& state) {
    if (read.encodeToJSONString() != text(state)) state.SkipWithError("read something else");
}

// The record's fields through three small functions, so that each peer tells only how it finds a member.

template <class Object, class GetText, class GetInteger, class GetObject>
void fill(Envelope& out, Object& object, const GetText& textOf, const GetInteger& integerOf,
          const GetObject& objectOf) {
    out.requestId = textOf(object, "requestId");
    if (auto client = objectOf(object, "client")) {
        out.client = ASClient::make();
        out.client->pid = integerOf(*client, "pid");
        out.client->identifier = textOf(*client, "identifier");
        out.client->name = textOf(*client, "name");
        out.client->version = textOf(*client, "version");
        out.client->build = textOf(*client, "build");
    }
    out.path = textOf(object, "path");
    if (auto body = objectOf(object, "body")) {
        out.body = Envelope::Body::make();
        const auto caseOf = [&]<class E>(std::optional<E>& field, const char* key) {
            if (const auto raw = textOf(*body, key)) field = caseFromText<E>(*raw).value_or(defaultCase<E>());
        };
        caseOf(out.body->action, "action");
        out.body->text = textOf(*body, "text");
        out.body->imageBase64 = textOf(*body, "imageBase64");
        caseOf(out.body->windowLocation, "windowLocation");
        caseOf(out.body->inputBoxState, "inputBoxState");
    }
}

void decodeOurs(benchmark::State& state) {
    const std::string& json = text(state);
    std::shared_ptr<Envelope> read;
    for (auto _ : state) {
        read = Envelope::fromJSONString(json);
        benchmark::DoNotOptimize(read);
    }
    check(*read, state);
}

using Text = std::optional<std::string>;

void decodeSimdjsonDOM(benchmark::State& state) {
    using namespace simdjson;
    const std::string& json = text(state);
    dom::parser parser;
    std::shared_ptr<Envelope> read;
    for (auto _ : state) {
        read = Envelope::make();
        dom::object root;
        if (parser.parse(json).get(root)) state.SkipWithError("not read");
        fill(
            *read, root,
            [](const dom::object& object, const char* key) -> Text {
                std::string_view value;
                if (object[key].get(value)) return std::nullopt;
                return std::string(value);
            },
            [](const dom::object& object, const char* key) -> std::optional<std::int32_t> {
                std::int64_t value = 0;
                if (object[key].get(value)) return std::nullopt;
                return static_cast<std::int32_t>(value);
            },
            [](const dom::object& object, const char* key) -> std::optional<dom::object> {
                dom::object value;
                if (object[key].get(value)) return std::nullopt;
                return value;
            });
        benchmark::DoNotOptimize(read);
    }
    check(*read, state);
}

void decodeSimdjsonOnDemand(benchmark::State& state) {
    using namespace simdjson;
    const std::string& json = text(state);
    ondemand::parser parser;
    std::string padded;
    std::shared_ptr<Envelope> read;
    for (auto _ : state) {
        read = Envelope::make();
        padded.reserve(json.size() + SIMDJSON_PADDING);
        padded.assign(json);
        ondemand::document document;
        ondemand::object root;
        if (parser.iterate(padded_string_view(padded.data(), padded.size(), padded.capacity()))
                .get(document) ||
            document.get_object().get(root)) {
            state.SkipWithError("not read");
        }
        const auto textOf = [](simdjson_result<ondemand::value> found) -> Text {
            std::string_view value;
            if (found.get_string().get(value)) return std::nullopt;
            return std::string(value);
        };
        // Fields in the order of the text, as On-Demand wants them.
        for (auto field : root) {
            std::string_view key;
            if (field.unescaped_key().get(key)) break;
            if (key == "requestId") {
                read->requestId = textOf(field.value());
            } else if (key == "path") {
                read->path = textOf(field.value());
            } else if (key == "client") {
                read->client = ASClient::make();
                ondemand::object client;
                if (field.value().get_object().get(client)) break;
                for (auto member : client) {
                    std::string_view name;
                    if (member.unescaped_key().get(name)) break;
                    if (name == "pid") {
                        std::int64_t pid = 0;
                        if (!member.value().get_int64().get(pid))
                            read->client->pid = static_cast<std::int32_t>(pid);
                    } else {
                        Text value = textOf(member.value());
                        (name == "identifier" ? read->client->identifier
                         : name == "name"     ? read->client->name
                         : name == "version"  ? read->client->version
                                              : read->client->build) = std::move(value);
                    }
                }
            } else if (key == "body") {
                read->body = Envelope::Body::make();
                ondemand::object body;
                if (field.value().get_object().get(body)) break;
                for (auto member : body) {
                    std::string_view name;
                    if (member.unescaped_key().get(name)) break;
                    std::string_view value;
                    if (member.value().get_string().get(value)) break;
                    if (name == "action") {
                        read->body->action = caseFromText<Envelope::TranslateAction>(value);
                    } else if (name == "windowLocation") {
                        read->body->windowLocation = caseFromText<Envelope::WindowLocation>(value);
                    } else if (name == "text") {
                        read->body->text = value;
                    } else if (name == "imageBase64") {
                        read->body->imageBase64 = value;
                    }
                }
            }
        }
        benchmark::DoNotOptimize(read);
    }
    check(*read, state);
}

void decodeRapidJSON(benchmark::State& state) {
    using Member = rapidjson::Value;
    const std::string& json = text(state);
    std::shared_ptr<Envelope> read;
    for (auto _ : state) {
        read = Envelope::make();
        rapidjson::Document document;
        constexpr unsigned flags = rapidjson::kParseValidateEncodingFlag | rapidjson::kParseFullPrecisionFlag;
        document.Parse<flags>(json.data(), json.size());
        fill(
            *read, document,
            [](const Member& object, const char* key) -> Text {
                const auto found = object.FindMember(key);
                if (found == object.MemberEnd()) return std::nullopt;
                return std::string(found->value.GetString(), found->value.GetStringLength());
            },
            [](const Member& object, const char* key) -> std::optional<std::int32_t> {
                const auto found = object.FindMember(key);
                if (found == object.MemberEnd()) return std::nullopt;
                return found->value.GetInt();
            },
            [](const Member& object, const char* key) -> const Member* {
                const auto found = object.FindMember(key);
                return found == object.MemberEnd() ? nullptr : &found->value;
            });
        benchmark::DoNotOptimize(read);
    }
    check(*read, state);
}

void decodeBoost(benchmark::State& state) {
    using boost::json::object;
    const std::string& json = text(state);
    boost::json::parser parser;
    static unsigned char buffer[8192];
    std::shared_ptr<Envelope> read;
    for (auto _ : state) {
        read = Envelope::make();
        boost::json::monotonic_resource memory(buffer);
        parser.reset(&memory);
        parser.write(json);
        const boost::json::value value = parser.release();
        fill(
            *read, value.as_object(),
            [](const object& from, const char* key) -> Text {
                const auto* found = from.if_contains(key);
                if (!found) return std::nullopt;
                return std::string(found->as_string());
            },
            [](const object& from, const char* key) -> std::optional<std::int32_t> {
                const auto* found = from.if_contains(key);
                if (!found) return std::nullopt;
                return static_cast<std::int32_t>(found->as_int64());
            },
            [](const object& from, const char* key) -> const object* {
                const auto* found = from.if_contains(key);
                return found ? &found->as_object() : nullptr;
            });
        benchmark::DoNotOptimize(read);
    }
    check(*read, state);
}

void decodeNlohmann(benchmark::State& state) {
    using nlohmann::json;
    const std::string& source = text(state);
    std::shared_ptr<Envelope> read;
    for (auto _ : state) {
        read = Envelope::make();
        const json root = json::parse(source);
        fill(
            *read, root,
            [](const json& object, const char* key) -> Text {
                const auto found = object.find(key);
                if (found == object.end()) return std::nullopt;
                return found->get_ref<const std::string&>();
            },
            [](const json& object, const char* key) -> std::optional<std::int32_t> {
                const auto found = object.find(key);
                if (found == object.end()) return std::nullopt;
                return found->get<std::int32_t>();
            },
            [](const json& object, const char* key) -> const json* {
                const auto found = object.find(key);
                return found == object.end() ? nullptr : &*found;
            });
        benchmark::DoNotOptimize(read);
    }
    check(*read, state);
}

void encodeOurs(benchmark::State& state) {
    const Envelope& value = envelope(state);
    for (auto _ : state) benchmark::DoNotOptimize(value.encodeToJSONString());
}

void encodeRapidJSON(benchmark::State& state) {
    const Envelope& value = envelope(state);
    rapidjson::StringBuffer buffer;
    for (auto _ : state) {
        buffer.Clear();
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        const auto put = [&writer](std::string_view key, std::string_view field) {
            writer.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
            writer.String(field.data(), static_cast<rapidjson::SizeType>(field.size()));
        };
        writer.StartObject();
        put("requestId", *value.requestId);
        writer.Key("client", 6);
        writer.StartObject();
        writer.Key("pid", 3);
        writer.Int(*value.client->pid);
        put("identifier", *value.client->identifier);
        put("name", *value.client->name);
        put("version", *value.client->version);
        put("build", *value.client->build);
        writer.EndObject();
        put("path", *value.path);
        writer.Key("body", 4);
        writer.StartObject();
        put("action", caseText(*value.body->action));
        put("text", *value.body->text);
        if (value.body->imageBase64) put("imageBase64", *value.body->imageBase64);
        put("windowLocation", caseText(*value.body->windowLocation));
        writer.EndObject();
        writer.EndObject();
        std::string text(buffer.GetString(), buffer.GetSize());
        benchmark::DoNotOptimize(text);
    }
}

void encodeBoost(benchmark::State& state) {
    const Envelope& value = envelope(state);
    static unsigned char memoryBuffer[8192];
    boost::json::serializer serializer;
    for (auto _ : state) {
        boost::json::monotonic_resource memory(memoryBuffer);
        boost::json::object client(&memory);
        client.emplace("pid", *value.client->pid);
        client.emplace("identifier", *value.client->identifier);
        client.emplace("name", *value.client->name);
        client.emplace("version", *value.client->version);
        client.emplace("build", *value.client->build);
        boost::json::object body(&memory);
        body.emplace("action", caseText(*value.body->action));
        body.emplace("text", *value.body->text);
        if (value.body->imageBase64) body.emplace("imageBase64", *value.body->imageBase64);
        body.emplace("windowLocation", caseText(*value.body->windowLocation));
        boost::json::object root(&memory);
        root.emplace("requestId", *value.requestId);
        root.emplace("client", std::move(client));
        root.emplace("path", *value.path);
        root.emplace("body", std::move(body));
        std::string text = boost::json::serialize(root);
        benchmark::DoNotOptimize(text);
    }
}

void encodeNlohmann(benchmark::State& state) {
    const Envelope& value = envelope(state);
    for (auto _ : state) {
        nlohmann::json root{{"requestId", *value.requestId},
                            {"client",
                             {{"pid", *value.client->pid},
                              {"identifier", *value.client->identifier},
                              {"name", *value.client->name},
                              {"version", *value.client->version},
                              {"build", *value.client->build}}},
                            {"path", *value.path},
                            {"body",
                             {{"action", caseText(*value.body->action)},
                              {"text", *value.body->text},
                              {"windowLocation", caseText(*value.body->windowLocation)}}}};
        if (value.body->imageBase64) root["body"]["imageBase64"] = *value.body->imageBase64;
        std::string text = root.dump();
        benchmark::DoNotOptimize(text);
    }
}

[[maybe_unused]] const bool registered = [] {
    const auto both = [](const std::string& way, const std::string& who, void (*run)(benchmark::State&)) {
        benchmark::RegisterBenchmark(("json/" + way + "300/" + who).c_str(), run)->Arg(0)->ArgName("size");
        benchmark::RegisterBenchmark(("json/" + way + "4mb/" + who).c_str(), run)->Arg(1)->ArgName("size");
    };
    both("decode", "ours", decodeOurs);
    both("decode", "simdjson-dom", decodeSimdjsonDOM);
    both("decode", "simdjson-ondemand", decodeSimdjsonOnDemand);
    both("decode", "rapidjson", decodeRapidJSON);
    both("decode", "boost", decodeBoost);
    both("decode", "nlohmann", decodeNlohmann);
    both("encode", "ours", encodeOurs);
    both("encode", "rapidjson", encodeRapidJSON);
    both("encode", "boost", encodeBoost);
    both("encode", "nlohmann", encodeNlohmann);
    return true;
}();

}  // namespace
}  // namespace zqcore
