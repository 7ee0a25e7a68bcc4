#include "cli/plot/page/page.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <vector>

#include "cli/app/utf8.h"
#include "cli/plot/colours.h"
#include "cli/plot/page/parts.h"

namespace cli {

namespace {

// Between the tags of a script nothing may look like a tag or a comment.
std::string json_text(const std::string &text) {
    constexpr bool kAsciiOnly = true;
    std::string result;
    for (const char c : nlohmann::json(as_utf8(text)).dump(-1, ' ', kAsciiOnly))
        if (c == '<' || c == '>' || c == '&')
            result += fmt::format("\\u{:04x}", static_cast<int>(c));
        else
            result += c;
    return result;
}

std::string html_text(const std::string &text) {
    std::string result;
    for (const char c : as_utf8(text)) switch (c) {
            case '<': result += "&lt;"; break;
            case '>': result += "&gt;"; break;
            case '&': result += "&amp;"; break;
            default: result += c;
        }
    return result;
}

std::string number(double value, int digits) {
    return std::isfinite(value) ? fmt::format("{:.{}g}", value, digits) : "null";
}

constexpr int kDigits = 7, kDigitsOfPlaces = 10;  // of values, of what they are drawn over

std::string numbers(const std::vector<double> &values, int digits) {
    std::string text = "[";
    for (const double value : values) {
        if (text.size() > 1) text += ',';
        text += number(value, digits);
    }
    text += ']';
    return text;
}

bool is_even(const std::vector<double> &x, double step) {
    constexpr double kTolerance = 1e-6;  // of a step
    for (std::size_t i = 0; i < x.size(); ++i)
        if (!(std::abs(x[0] + static_cast<double>(i) * step - x[i]) <= kTolerance * std::abs(step))) return false;
    return true;
}

// Even steps as their first place, length and number: half the size of the page.
std::string places(const std::vector<double> &x) {
    constexpr int kAllDigits = 17;
    const double step = x.size() > 1 ? (x.back() - x.front()) / static_cast<double>(x.size() - 1) : 0;
    if (x.size() < 3 || !is_even(x, step)) return numbers(x, kDigitsOfPlaces);
    return fmt::format(R"({{"from":{},"step":{},"count":{}}})", number(x[0], kAllDigits), number(step, kAllDigits),
                       x.size());
}

template <class List, class Write>
std::string list_of(const List &list, Write write) {
    std::string text = "[";
    for (const auto &item : list) {
        if (text.size() > 1) text += ',';
        text += write(item);
    }
    text += ']';
    return text;
}

std::string limit(std::optional<double> value) { return number(value.value_or(std::nan("")), kDigitsOfPlaces); }

std::string curve_text(const Curve &curve) {
    const char *style = curve.crosses ? "crosses" : curve.points ? "points" : "line";
    return fmt::format(R"({{"title":{},"style":"{}","x":{},"y":{}}})", json_text(curve.title), style, places(curve.x),
                       numbers(curve.y, kDigits));
}

std::string mark_text(const Mark &mark) {
    return fmt::format(R"({{"at":{},"label":{},"before":{},"top":{}}})", number(mark.at, kDigitsOfPlaces),
                       json_text(mark.label), mark.label_before, mark.label_on_top);
}

std::string label_text(const Label &label) {
    return fmt::format(R"({{"x":{},"y":{},"text":{}}})", number(label.x, kDigitsOfPlaces), number(label.y, kDigits),
                       json_text(label.text));
}

std::string band_text(const Shade &band) {
    return fmt::format(R"({{"x":{},"label":{}}})", numbers({band.from, band.to}, kDigitsOfPlaces),
                       json_text(band.label));
}

std::string image_text(const std::optional<Image> &image) {
    if (!image) return "null";
    constexpr int kDigitsOfColours = 4;
    double lowest = HUGE_VAL, highest = -HUGE_VAL;
    for (const double value : image->values)
        if (std::isfinite(value)) {
            lowest = std::fmin(lowest, value);
            highest = std::fmax(highest, value);
        }
    return fmt::format(R"({{"columns":{},"rows":{},"x":{},"y":{},"range":{},"label":{},"values":{}}})", image->columns,
                       image->rows, numbers({image->x_from, image->x_to}, kDigitsOfPlaces),
                       numbers({image->y_from, image->y_to}, kDigitsOfPlaces),
                       numbers({image->lowest.value_or(lowest), image->highest.value_or(highest)}, kDigits),
                       json_text(image->label), numbers(image->values, kDigitsOfColours));
}

std::string panel_text(const Panel &panel) {
    std::string text = "\n{";
    auto out = std::back_inserter(text);
    fmt::format_to(out, R"("title":{},"x_label":{},"y_label":{},)", json_text(panel.title), json_text(panel.x_label),
                   json_text(panel.y_label));
    fmt::format_to(out, R"("logarithmic":{},"y_logarithmic":{},"key_below":{},"square":{},)", panel.logarithmic,
                   panel.y_logarithmic, panel.key_below, panel.square);
    fmt::format_to(out, R"("x":[{},{}],"y":[{},{}],"step":{},)", limit(panel.x_lowest), limit(panel.x_highest),
                   limit(panel.y_lowest), limit(panel.y_highest), limit(panel.y_step));
    fmt::format_to(out, R"("marks":{},"levels":{},"labels":{},"bands":{},"image":{},"curves":{}}})",
                   list_of(panel.marks, mark_text), list_of(panel.levels, mark_text), list_of(panel.labels, label_text),
                   list_of(panel.bands, band_text), image_text(panel.image), list_of(panel.curves, curve_text));
    return text;
}

std::string figure_text(const Figure &figure) {
    const auto quoted = [](const char *colour) { return json_text(colour); };
    return fmt::format(R"({{"colours":{},"band":{},"palette":{},"panels":{}}})", list_of(kColours, quoted),
                       quoted(kBandColour), list_of(kPalette, quoted), list_of(figure.panels, panel_text));
}

std::string title_of(const Figure &figure) {
    if (!figure.title.empty() || figure.panels.empty()) return figure.title;
    return figure.panels.front().title;
}

}  // namespace

std::string html_page(const Figure &figure) {
    const std::string title = html_text(title_of(figure));
    std::string page = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";
    page +=
        "<meta name=\"viewport\" content=\"width=device-width\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src 'unsafe-inline'; "
        "style-src 'unsafe-inline'\">\n";
    page += "<title>" + title + "</title>\n";
    page += fmt::format("<style>\n{}\n{}</style>\n</head>\n<body>\n<h1>{}</h1>\n", kUplotStyle, kViewerStyle, title);
    page += "<script type=\"application/json\" id=\"figure\">" + figure_text(figure) + "</script>\n";
    page += fmt::format("<script>\n/*\n{}\n*/\n{}</script>\n", kUplotLicence, kUplotScript);
    page += fmt::format("<script>\n{}</script>\n</body>\n</html>\n", kViewerScript);
    return page;
}

}  // namespace cli
