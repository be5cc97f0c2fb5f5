// SPDX-License-Identifier: MIT
/// Prints findings.
#include "report.h"

#include <algorithm>
#include <cctype>
#include <iomanip>
#include <ostream>
#include <sstream>

#include <nlohmann/json.hpp>

namespace Corvane::Velk {

namespace {

using Json = nlohmann::ordered_json;
using Synopses::Finding;

const char* levelOf(Synopses::Rule rule)
{
    return Synopses::nameOf(Synopses::infoOf(rule).severity);
}

std::size_t charactersOf(const std::string& text, std::size_t begin, std::size_t end)
{
    const auto at = [&](std::size_t place) {
        return text.begin() + static_cast<std::ptrdiff_t>(std::min(place, text.size()));
    };
    return static_cast<std::size_t>(std::count_if(at(begin), at(end), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; // it begins a character of UTF-8
    }));
}

void writeMessage(const Place& place, std::size_t column, std::size_t length, const std::string& message,
                  std::ostream& out)
{
    const std::size_t begin = place.column + column;
    out << place.file << ':' << place.line << ':' << begin + 1 << ": " << message << '\n'
        << Synopses::excerpt(place.text, begin, length);
}

/// Returns  the file's name as a URI.
std::string uriOf(const std::string& file)
{
    std::ostringstream uri;
    uri << (file.rfind('/', 0) == 0 ? "file://" : "") << std::uppercase << std::hex;
    for (const char c : file) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || std::string("-._~/").find(c) != std::string::npos) {
            uri << c;
        } else {
            uri << '%' << std::setw(2) << std::setfill('0') << static_cast<unsigned int>(static_cast<unsigned char>(c));
        }
    }
    return uri.str();
}

Json locationOf(const Place& place, std::size_t column, std::size_t length)
{
    const std::size_t begin = place.column + column;
    const std::size_t before = charactersOf(place.text, 0, begin);
    const std::size_t inside = charactersOf(place.text, begin, begin + length);
    return {{"physicalLocation",
             {{"artifactLocation", {{"uri", uriOf(place.file)}}},
              {"region",
               {{"startLine", place.line},
                {"startColumn", before + 1},
                {"endColumn", before + inside + 1},
                {"snippet", {{"text", place.text}}}}}}}};
}

Json resultOf(const Finding& finding, const Input& input)
{
    Json result = {
        {"ruleId", Synopses::infoOf(finding.rule).name},
        {"ruleIndex", static_cast<std::size_t>(finding.rule)},
        {"level", levelOf(finding.rule)},
        {"message", {{"text", finding.message}}},
        {"locations", Json::array({locationOf(input.places[finding.synopsis], finding.column, finding.length)})}};
    if (finding.other) {
        Json other = locationOf(input.places[*finding.other], 0, input.synopses[*finding.other].text.size());
        other["message"] = {{"text", "the other synopsis"}};
        result["relatedLocations"] = Json::array({other});
    }
    return result;
}

} // namespace

void writeText(const std::vector<Finding>& findings, const Input& input, std::ostream& out)
{
    for (const Finding& finding : findings) {
        writeMessage(input.places[finding.synopsis], finding.column, finding.length,
                     std::string(levelOf(finding.rule)) + ": " + finding.message + " [" +
                         Synopses::infoOf(finding.rule).name + "]",
                     out);
        if (finding.other) {
            writeMessage(input.places[*finding.other], 0, input.synopses[*finding.other].text.size(),
                         "note: the other synopsis", out);
        }
    }
}

void writeSarif(const std::vector<Finding>& findings, const Input& input, std::ostream& out)
{
    Json rules = Json::array();
    for (const Synopses::RuleInfo& rule : Synopses::rules) {
        rules.push_back({{"id", rule.name},
                         {"shortDescription", {{"text", rule.description}}},
                         {"defaultConfiguration", {{"level", levelOf(rule.rule)}}}});
    }
    Json results = Json::array();
    for (const Finding& finding : findings) {
        results.push_back(resultOf(finding, input));
    }
    const Json driver = {{"name", "corvane-velk"}, {"version", CORVANE_VELK_VERSION}, {"rules", rules}};
    const Json run = {
        {"tool", {{"driver", driver}}}, {"columnKind", "unicodeCodePoints"}, {"results", std::move(results)}};
    const Json log = {{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
                      {"version", "2.1.0"},
                      {"runs", Json::array({run})}};
    // What isn't UTF-8 is replaced: JSON can't hold it.
    out << log.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

} // namespace Corvane::Velk
