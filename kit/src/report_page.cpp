#include "report_page.h"

#include <utility>

#include <nlohmann/json.hpp>

#include "report_data.h"

namespace kit
{

namespace
{

/// What the template has in the places of the pieces.
constexpr std::string_view kTitleMark = "<!--TITLE-->";
constexpr std::string_view kStyleMark = "/*STYLE*/";
constexpr std::string_view kDataMark = "/*DATA*/";
constexpr std::string_view kScriptMark = "/*SCRIPT*/";

/// The text with the marks, which stand in this order, replaced by the pieces.
std::string fill(std::string_view page,
                 const std::initializer_list<std::pair<std::string_view, std::string_view>>& pieces)
{
    std::size_t size = page.size();
    for (const auto& [mark, piece] : pieces)
        size += piece.size();
    std::string text;
    text.reserve(size);
    for (const auto& [mark, piece] : pieces) {
        const std::size_t at = page.find(mark);
        if (at == std::string_view::npos) return {};
        text += page.substr(0, at);
        text += piece;
        page.remove_prefix(at + mark.size());
    }
    return text.append(page);
}

}  // namespace

std::string scriptSafe(std::string_view json)
{
    std::string text;
    text.reserve(json.size() + json.size() / 64);
    for (std::size_t i = 0; i < json.size(); ++i) {
        const std::string_view rest = json.substr(i, 3);
        if (json[i] == '<') {
            text += "\\u003c";
        } else if (rest == "\xe2\x80\xa8" || rest == "\xe2\x80\xa9") {
            text += rest.back() == '\xa8' ? "\\u2028" : "\\u2029";
            i += 2;
        } else {
            text += json[i];
        }
    }
    return text;
}

std::string htmlText(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else
            result += c;
    }
    return result;
}

bool hasReportPage()
{
    return !reportPieces().page.empty();
}

std::string reportPage(const Network& network, const Solution& solution, const Certificate& certificate,
                       const Findings& doctor, const ReportOptions& options)
{
    const ReportPieces pieces = reportPieces();
    if (pieces.page.empty()) return {};
    using Json = nlohmann::ordered_json;
    const Json data = reportData(network, solution, certificate, doctor, options);
    const std::string json = scriptSafe(data.dump(-1, ' ', false, Json::error_handler_t::replace));
    const std::string title = htmlText(network.title.empty() ? "Network" : network.title);
    return fill(
        pieces.page,
        {{kTitleMark, title}, {kStyleMark, pieces.style}, {kDataMark, json}, {kScriptMark, pieces.script}});
}

}  // namespace kit
