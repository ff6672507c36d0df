#include "svg_picture.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include <tavell/Constants.h>

#include "element_kinds.h"
#include "svg_picture_shapes.h"
#include "xml_text.h"

namespace kit
{

namespace
{

constexpr double kMargin = 40.0;
constexpr double kHeader = 74.0;
constexpr double kLegendWidth = 118.0;
constexpr double kFooter = 34.0;
constexpr double kNarrowest = 200.0;
constexpr double kWidest = 20000.0;
constexpr double kUsualWidth = 1200.0;
/// Height of the drawing by its width.
constexpr double kFlattest = 0.25;
constexpr double kTallest = 0.85;
/// [px], elements shorter than this have no arrow.
constexpr double kShortestWithArrow = 26.0;
/// [px], nodes closer than this have no arrows of given flows.
constexpr double kClosestFlowMarks = 18.0;
/// [px], shorter elements have their symbol beside them.
constexpr double kShortestWithSymbol = 18.0;
constexpr double kSymbolRadius = 9.0;
constexpr double kSmallestNode = 2.0;  // [px], below it the rings of nodes would cut up the lines
constexpr double kLetterHeight = 11.0;
/// Nodes and elements whose names are written.
constexpr std::size_t kMostNames = 120;
/// Elements that are drawn in pieces of changing colour, and pieces from one end of the scale to the other.
constexpr std::size_t kMostGradients = 2000;
constexpr double kShades = 48.0;
constexpr double kOverlap = 0.3;  // [px]
constexpr std::size_t kLegendSteps = 48;
/// [px], numbers of the legend stand at least so far apart.
constexpr double kLegendLine = 14.0;

constexpr std::string_view kInk = "#1c2530";
constexpr std::string_view kFaint = "#66717e";
constexpr std::string_view kPlain = "#7a8794";

constexpr double kTurn = 6.283185307179586;  // [rad]
/// [px], widths of letters of the names of nodes and elements.
constexpr double kNodeLetter = 6.9;
constexpr double kElementLetter = 6.2;

/// Where a name may stand beside a point; those at equal angles to the free side are tried in this order.
constexpr std::array<Point2, 8> kSides{Point2{1.0, 0.0},   Point2{0.0, -1.0}, Point2{0.0, 1.0},
                                       Point2{-1.0, 0.0},  Point2{1.0, -1.0}, Point2{1.0, 1.0},
                                       Point2{-1.0, -1.0}, Point2{-1.0, 1.0}};

/// What stands in the middle of an element.
enum class Symbol { none, pump, valve, nonReturn, orifice, loss };

Symbol symbolOf(const Element& element)
{
    if (element.hasCheckValve) return Symbol::nonReturn;
    switch (element.kind != nullptr ? element.kind->type : TAVELL_PIPE) {
    case TAVELL_PUMP:
        return Symbol::pump;
    case TAVELL_LOSS:
        return Symbol::loss;
    case TAVELL_ORIFICE:
        return Symbol::orifice;
    case TAVELL_KV_VALVE:
    case TAVELL_CV_VALVE:
    case TAVELL_CONTROL_VALVE:
        return Symbol::valve;
    case TAVELL_NON_RETURN:
        return Symbol::nonReturn;
    default:
        return Symbol::none;
    }
}

/// A small drawing with its origin at a station and its x axis along the line there.
std::string placed(const Station& station, const std::string& drawing, double size = 1.0)
{
    const Point2 along = size * station.along;
    const std::string text = "<g transform=\"matrix(" + pointText(along) + ' ' + px(-along.y) + ' ' +
                             px(along.x) + ' ' + pointText(station.at) + ")\">";
    return text + drawing + "</g>\n";
}

std::string drawingOf(Symbol symbol)
{
    switch (symbol) {
    case Symbol::pump:
        return R"(<circle r="9"/><path d="M-4.5 -7.8L9 0L-4.5 7.8"/>)";
    case Symbol::valve:
        return R"(<path d="M-9 -6L9 6V-6L-9 6Z"/>)";
    case Symbol::nonReturn:
        return R"(<path d="M-7 -6L7 0L-7 6ZM7 -6V6"/>)";
    case Symbol::orifice:
        return R"(<path d="M0 -8V-2.5M0 2.5V8"/>)";
    case Symbol::loss:
        return R"(<rect x="-8" y="-5" width="16" height="10"/>)";
    case Symbol::none:
        break;
    }
    return {};
}

std::string textAt(const Point2& at, std::string_view attributes, const std::string& text)
{
    return "<text x=\"" + px(at.x) + "\" y=\"" + px(at.y) + "\" " + std::string(attributes) + '>' +
           xmlText(text) + "</text>\n";
}

std::string counted(std::size_t count, const std::string& what)
{
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

/// Decimals that a step of a scale needs, 1, 2 or 5 times a power of ten; nothing for an extreme one.
std::optional<int> decimalsOf(const std::vector<double>& ticks)
{
    const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : 0.0;
    if (!(step > 1e-7 && std::abs(ticks.front()) < 1e7 && std::abs(ticks.back()) < 1e7)) return std::nullopt;
    return std::max(0, static_cast<int>(-std::floor(std::log10(step) + 1e-6)));
}

/// A number with so many decimals; a short one where nothing says how many.
std::string withDecimals(double value, std::optional<int> decimals)
{
    if (!decimals || std::abs(value) >= 1e8) return shortNumber(value);
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, *decimals);
    return {text.data(), end.ptr};
}

/// An end of a scale with one decimal more than its steps, since it is no round number, and without zeros at its end.
std::string endLabel(double value, std::optional<int> decimals)
{
    if (!decimals) return shortNumber(value);
    std::string label = withDecimals(value, *decimals + 1);
    label.erase(label.find_last_not_of('0') + 1);
    if (label.back() == '.') label.pop_back();
    return label == "-0" ? "0" : label;
}

struct Arrow {
    Point2 at;
    Point2 along;  // the way of the flow, length 1
};

struct PlacedSymbol {
    std::size_t element;
    Station station;
    Point2 middle;  // of its element
    double size;

    bool isBeside() const { return length(station.at - middle) > 0.5; }
};

class Picture
{
public:
    Picture(const Network& network, const Solution* solution, const PictureOptions& options)
        : m_network(network), m_solution(solution), m_options(options), m_placement(placeNetwork(network)),
          m_view(options.view.value_or(m_placement.bestView))
    {
        m_width = std::isfinite(options.width) ? std::clamp(options.width, kNarrowest, kWidest) : kUsualWidth;
        chooseColours();
        placeLines();
    }

    std::string document()
    {
        m_svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + px(m_width) + "\" height=\"" +
                px(m_height) + "\" viewBox=\"0 0 " + px(m_width) + ' ' + px(m_height) +
                "\" font-family=\"Inter, 'Segoe UI', 'Helvetica Neue', Arial, sans-serif\" font-size=\"11\""
                " fill=\"" +
                std::string(kInk) + "\">\n";
        m_svg += "<title>" + xmlText(title()) +
                 "</title>\n<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
        takePlaces();
        drawHeader();
        drawElements();
        drawLeaders();
        drawArrows();
        drawNodes();
        drawSymbols();
        drawBoundaries();
        drawNames();
        drawLegend();
        m_svg += "</svg>\n";
        return std::move(m_svg);
    }

private:
    std::string title() const { return m_network.title.empty() ? "Network" : m_network.title; }

    bool hasResults() const { return m_solution != nullptr && m_solution->hasResults(); }

    void chooseColours()
    {
        m_quantity = m_options.quantity.value_or(PictureQuantity::pressure);
        if (hasResults()) m_values = pictureValues(*m_solution, m_quantity, m_options.units);
        m_range = colourRange(m_values);
    }

    /// Lines of all elements and points of all nodes in the drawing, y downwards.
    void placeLines()
    {
        for (const Point3& at : m_placement.nodes)
            m_points.push_back(project(at, m_view, m_placement));
        for (std::size_t e = 0; e < m_network.elements.size(); ++e) {
            std::vector<Point2> line{m_points[m_network.elements[e].from]};
            for (const Point3& vertex : m_placement.vertices[e])
                line.push_back(project(vertex, m_view, m_placement));
            line.push_back(m_points[m_network.elements[e].to]);
            m_lines.push_back(std::move(line));
        }
        spreadParallels();
        m_hasNames = m_points.size() <= kMostNames && m_lines.size() <= kMostNames;
        fitToPage();

        m_lineWidth = std::clamp(m_spacing / 16.0, 0.8, 3.0);
        m_nodeRadius = std::clamp(m_spacing / 14.0, 0.0, 4.0);
        if (m_spacing >= kClosestFlowMarks || m_hasNames) m_free = freeDirections();
    }

    /// Scales and moves all points into the drawing; sets its height.
    void fitToPage()
    {
        constexpr double kMax = std::numeric_limits<double>::max();
        Point2 low{kMax, kMax};
        Point2 high{-kMax, -kMax};
        const auto see = [&](const Point2& point) {
            low = {std::min(low.x, point.x), std::min(low.y, point.y)};
            high = {std::max(high.x, point.x), std::max(high.y, point.y)};
        };
        std::for_each(m_points.begin(), m_points.end(), see);
        for (const std::vector<Point2>& line : m_lines)
            std::for_each(line.begin(), line.end(), see);
        if (m_points.empty()) low = high = {};

        const double side = sideMargin();
        const double wide = m_width - 2.0 * side - (m_values.empty() ? 0.0 : kLegendWidth);
        const Point2 extent = high - low;
        const double wanted = extent.x > 0.0 ? wide * extent.y / extent.x : wide;
        const double tall = std::clamp(wanted, kFlattest * wide, kTallest * wide);
        m_height = kHeader + kMargin + tall + kFooter;
        double scale = kMax;
        if (extent.x > 0.0) scale = std::min(scale, wide / extent.x);
        if (extent.y > 0.0) scale = std::min(scale, tall / extent.y);
        if (!(scale < kMax)) scale = 1.0;
        const Point2 middle = 0.5 * (low + high);
        const Point2 centre{side + 0.5 * wide, kHeader + 0.5 * kMargin + 0.5 * tall};
        const auto move = [&](Point2& point) {
            point = {centre.x + scale * (point.x - middle.x), centre.y - scale * (point.y - middle.y)};
        };
        std::for_each(m_points.begin(), m_points.end(), move);
        for (std::vector<Point2>& line : m_lines)
            std::for_each(line.begin(), line.end(), move);
        m_spacing = std::sqrt(wide * tall / static_cast<double>(std::max<std::size_t>(1, m_points.size())));
    }

    /// [px], room left and right of the drawing: names of the outermost nodes stand there.
    double sideMargin() const
    {
        const double widest = std::min(120.0, m_width / 8.0);
        if (!m_hasNames) return std::min(kMargin, widest);
        double longest = 0.0;
        for (const Node& node : m_network.nodes)
            longest = std::max(longest, textWidth(node.name, kNodeLetter));
        return std::min(std::max(kMargin, longest + 16.0), widest);
    }

    /// Elements that join the same two nodes are bent apart.
    void spreadParallels()
    {
        std::map<std::pair<std::size_t, std::size_t>, std::vector<std::size_t>> groups;
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const Element& element = m_network.elements[e];
            if (m_lines[e].size() == 2 && element.from != element.to)
                groups[std::minmax(element.from, element.to)].push_back(e);
        }
        for (const auto& group : groups) {
            // many get closer, so that they stay in the neighbourhood
            const double gap = std::min(0.12, 1.0 / static_cast<double>(group.second.size()));
            for (std::size_t i = 1; i < group.second.size(); ++i) {
                const std::size_t row = (i + 1) / 2;
                bend(group.second[i], gap * static_cast<double>(row), i % 2 == 0);
            }
        }
    }

    /// Leads a straight line around by a part of its length, on the same side whichever way it runs.
    void bend(std::size_t e, double part, bool isLeft)
    {
        const double offset =
            isLeft == (m_network.elements[e].from > m_network.elements[e].to) ? part : -part;
        const Point2 start = m_lines[e].front();
        const Point2 step = m_lines[e].back() - start;
        const Point2 away{-step.y * offset, step.x * offset};
        m_lines[e] = {start, start + 0.25 * step + away, start + 0.75 * step + away, start + step};
    }

    /// Places of everything but names, so that names keep off it.
    void takePlaces()
    {
        placeArrows();
        if (m_hasNames) {
            for (const std::vector<Point2>& line : m_lines)
                m_taken.addLine(line);
            for (const Arrow& arrow : m_arrows)
                m_taken.take(around(arrow.at, arrow.at, 4.5));
            for (const Point2& at : m_points)
                m_taken.take(around(at, at, m_nodeRadius));
            m_taken.take({0.0, 0.0, m_width, kHeader - 18.0});
            if (!m_values.empty())
                m_taken.take(
                    {m_width - kLegendWidth - 6.0, 0.0, m_width, legendTop() + legendHeight() + 10.0});
            takeBoundaries();
        }
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            if (symbolOf(m_network.elements[e]) != Symbol::none || m_network.elements[e].isClosed)
                placeSymbol(e);
        }
    }

    void takeBoundaries()
    {
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const std::optional<Boundary>& boundary = m_network.nodes[i].boundary;
            if (!boundary) continue;
            const Point2& at = m_points[i];
            if (boundary->pressure)
                m_taken.take(around(at, at, 8.0));
            else
                m_taken.take(around(at + 6.0 * m_free[i], at + 20.0 * m_free[i], 4.5));
        }
    }

    /// The symbol of an element stands on its middle, or beside it where the element is too short for it.
    void placeSymbol(std::size_t e)
    {
        const double whole = lengthOfLine(m_lines[e]);
        const Station middle = stationAt(m_lines[e], 0.5 * whole);
        const Symbol symbol = symbolOf(m_network.elements[e]);
        if (symbol != Symbol::pump && m_spacing < 14.0 && whole < kShortestWithArrow / 3.0) return;
        PlacedSymbol place{e, middle, middle.at,
                           std::clamp(whole / 34.0, symbol == Symbol::pump ? 0.7 : 0.5, 1.0)};
        if (m_hasNames && whole < kShortestWithSymbol) {
            const Point2 across{-middle.along.y, middle.along.x};
            for (const double distance : {-24.0, 24.0, -46.0, 46.0}) {
                const Point2 at = middle.at + distance * across;
                const Rectangle box = around(at, at, kSymbolRadius + 1.0);
                if (!m_taken.isFree(box) || m_taken.linesThrough(box) > 0) continue;
                place.station.at = at;
                place.size = 1.0;
                break;
            }
        }
        if (m_hasNames) m_taken.take(around(place.station.at, place.station.at, kSymbolRadius * place.size));
        m_symbols.push_back(place);
    }

    void drawHeader()
    {
        m_svg += textAt({kMargin, 34.0}, "font-size=\"18\" font-weight=\"600\"", fitted(title(), 11.6));
        std::string line =
            counted(m_network.nodes.size(), "node") + ", " + counted(m_network.elements.size(), "element");
        line += m_placement.isAutomatic ? "; automatic layout" : "; " + std::string(viewName(m_view));
        if (m_view != View::plan && m_placement.heightScale > 1.0 && m_placement.isToScale)
            line += ", heights \u00d7" + shortNumber(m_placement.heightScale);
        if (m_view != View::plan && !m_placement.isToScale) line += ", not to scale";
        if (!hasResults()) line += m_solution != nullptr ? "; did not solve, no results" : "; no results";
        if (hasResults() && m_solution->outcome != Outcome::converged) line += "; not converged";
        if (hasResults() && m_values.empty() && m_quantity != PictureQuantity::none)
            line += "; no values of " + std::string(columnOf(m_quantity).name);
        m_svg += textAt({kMargin, 54.0}, "font-size=\"12\" fill=\"" + std::string(kFaint) + '"',
                        fitted(line, 6.6));
    }

    /// A text cut to the width of the picture, letterWidth [px] for each letter.
    std::string fitted(const std::string& text, double letterWidth) const
    {
        const auto room = static_cast<std::size_t>((m_width - 2.0 * kMargin) / letterWidth);
        std::size_t letters = 0;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (startsLetter(text[i]) && ++letters > room) return text.substr(0, i) + "\u2026";
        }
        return text;
    }

    /// The place of a value on the colour scale; nothing when there is none.
    std::optional<double> shadeOf(std::size_t index) const
    {
        const double value = m_values[index];
        return std::isfinite(value) ? std::optional<double>(m_range.fraction(value)) : std::nullopt;
    }

    static std::string colourOrPlain(std::optional<double> shade)
    {
        return shade ? colourOf(*shade) : std::string(kPlain);
    }

    /// Where the ends of an element differ its colour runs from the one to the other.
    void drawShaded(std::size_t e)
    {
        const std::optional<double> start = shadeOf(m_network.elements[e].from);
        const std::optional<double> end = shadeOf(m_network.elements[e].to);
        const double change = start && end ? *end - *start : 0.0;
        const bool isMany = m_lines.size() > kMostGradients;
        const int pieces = isMany ? 1 : static_cast<int>(std::ceil(std::abs(change) * kShades));
        if (pieces < 2) {
            drawLine(m_lines[e],
                     colourOrPlain(start && end ? *start + 0.5 * change : std::optional<double>()));
            return;
        }
        // flat ends and a little overlap leave no seams; the node covers the first and the last
        const double step = lengthOfLine(m_lines[e]) / pieces;
        m_svg += "<g stroke-linecap=\"butt\">\n";
        for (int i = 0; i < pieces; ++i)
            drawLine(partOf(m_lines[e], i * step, (i + 1) * step + kOverlap),
                     colourOf(*start + (i + 0.5) / pieces * change));
        m_svg += "</g>\n";
    }

    void drawLine(const std::vector<Point2>& line, const std::string& colour)
    {
        m_svg += "<path stroke=\"" + colour + "\" d=\"" + pathThrough(line) + "\"/>\n";
    }

    void drawElements()
    {
        m_svg += "<g fill=\"none\" stroke-linecap=\"round\" stroke-linejoin=\"round\" stroke-width=\"" +
                 px(m_lineWidth) + "\">\n";
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            if (m_network.elements[e].isClosed)
                m_svg += "<path stroke=\"#b3bac2\" stroke-dasharray=\"4 4\" d=\"" + pathThrough(m_lines[e]) +
                         "\"/>\n";
            else if (m_values.empty())
                drawLine(m_lines[e], std::string(kPlain));
            else if (columnOf(m_quantity).isOfNodes)
                drawShaded(e);
            else
                drawLine(m_lines[e], colourOrPlain(shadeOf(e)));
        }
        m_svg += "</g>\n";
    }

    /// Thin lines from short elements to their symbols, and through these.
    void drawLeaders()
    {
        std::string path;
        for (const PlacedSymbol& symbol : m_symbols) {
            if (!symbol.isBeside()) continue;
            const Point2 stub = (kSymbolRadius + 4.0) * symbol.station.along;
            path += 'M' + pointText(symbol.middle) + 'L' + pointText(symbol.station.at) + 'M' +
                    pointText(symbol.station.at - stub) + 'L' + pointText(symbol.station.at + stub);
        }
        if (!path.empty())
            m_svg += "<path stroke=\"" + std::string(kFaint) + "\" stroke-width=\"1\" d=\"" + path + "\"/>\n";
    }

    /// Arrows of the flow stand on the middle of an element, or beside the symbol there.
    void placeArrows()
    {
        if (!hasResults()) return;
        double largest = 0.0;
        for (const double flow : m_solution->massFlow) {
            if (std::isfinite(flow)) largest = std::max(largest, std::abs(flow));
        }
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const double flow = m_solution->massFlow[e];
            const double whole = lengthOfLine(m_lines[e]);
            if (m_network.elements[e].isClosed || !(std::abs(flow) > 1e-7 * largest) ||
                whole < kShortestWithArrow)
                continue;
            const bool hasSymbol = symbolOf(m_network.elements[e]) != Symbol::none &&
                                   !(m_hasNames && whole < kShortestWithSymbol);
            if (hasSymbol && whole < 2.0 * kShortestWithArrow) continue;
            const Station station = stationAt(m_lines[e], (hasSymbol ? 0.75 : 0.5) * whole);
            m_arrows.push_back({station.at, (flow > 0.0 ? 1.0 : -1.0) * station.along});
        }
    }

    void drawArrows()
    {
        if (m_arrows.empty()) return;
        const double size = std::clamp(2.2 * m_lineWidth, 4.0, 7.0);
        std::string path;
        for (const Arrow& arrow : m_arrows) {
            const Point2 along = size * arrow.along;
            const Point2 side{-0.6 * along.y, 0.6 * along.x};
            path += 'M' + pointText(arrow.at + along) + 'L' + pointText(arrow.at - 0.6 * along + side) + 'L' +
                    pointText(arrow.at - 0.6 * along - side) + 'Z';
        }
        m_svg += "<path fill=\"" + std::string(kInk) + "\" d=\"" + path + "\"/>\n";
    }

    void drawSymbols()
    {
        m_svg += "<g fill=\"#ffffff\" stroke=\"" + std::string(kInk) +
                 "\" stroke-width=\"1.4\" stroke-linejoin=\"round\">\n";
        for (const PlacedSymbol& place : m_symbols) {
            const Symbol symbol = symbolOf(m_network.elements[place.element]);
            if (symbol != Symbol::none) m_svg += placed(place.station, drawingOf(symbol), place.size);
            if (m_network.elements[place.element].isClosed)
                m_svg +=
                    placed(place.station, R"(<path fill="none" stroke-width="2" d="M-5 -5L5 5M-5 5L5 -5"/>)",
                           place.size);
        }
        m_svg += "</g>\n";
    }

    void drawNodes()
    {
        if (m_nodeRadius < kSmallestNode) return;
        const bool isColoured = !m_values.empty() && columnOf(m_quantity).isOfNodes;
        m_svg += "<g stroke=\"#ffffff\" stroke-width=\"1\">\n";
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const std::string colour = isColoured ? colourOrPlain(shadeOf(i)) : std::string(kInk);
            m_svg += "<circle cx=\"" + px(m_points[i].x) + "\" cy=\"" + px(m_points[i].y) + "\" r=\"" +
                     px(m_nodeRadius) + "\" fill=\"" + colour + "\"/>\n";
        }
        m_svg += "</g>\n";
    }

    /// The direction in which a node has most room: the middle of the widest gap between its lines, the upper one of
    /// two that are as wide.
    std::vector<Point2> freeDirections() const
    {
        std::vector<std::pair<std::size_t, double>> angles;  // [rad], of every line that leaves a node
        const auto leave = [&](std::size_t node, const Point2& step) {
            if (length(step) > 0.0) angles.emplace_back(node, std::atan2(step.y, step.x));
        };
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const std::vector<Point2>& line = m_lines[e];
            leave(m_network.elements[e].from, line[1] - line[0]);
            leave(m_network.elements[e].to, line[line.size() - 2] - line.back());
        }
        std::sort(angles.begin(), angles.end());
        std::vector<Point2> free(m_points.size(), Point2{0.0, -1.0});
        for (std::size_t first = 0, end = 0; first < angles.size(); first = end) {
            while (end < angles.size() && angles[end].first == angles[first].first)
                ++end;
            double widest = 0.0;
            Point2& best = free[angles[first].first];
            for (std::size_t i = first; i < end; ++i) {
                const double gap =
                    (i + 1 < end ? angles[i + 1].second : angles[first].second + kTurn) - angles[i].second;
                const double middle = angles[i].second + 0.5 * gap;
                const Point2 direction{std::cos(middle), std::sin(middle)};
                const bool isAsWide = std::abs(gap - widest) < 1e-6;
                if (isAsWide ? direction.y < best.y - 1e-6 : gap > widest) best = direction;
                widest = std::max(widest, gap);
            }
        }
        return free;
    }

    /// A vessel where a pressure is given, an arrow into or out of the network where a flow is.
    void drawBoundaries()
    {
        m_svg += "<g stroke=\"" + std::string(kInk) +
                 "\" stroke-width=\"1.4\" stroke-linejoin=\"round\" fill=\"none\">\n";
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const std::optional<Boundary>& boundary = m_network.nodes[i].boundary;
            if (!boundary) continue;
            const Point2& at = m_points[i];
            if (boundary->pressure) {
                m_svg += placed({at, {1.0, 0.0}},
                                R"(<path fill="#ffffff" d="M-7 -7V6H7V-7"/>)"
                                R"(<path fill="#4a90c2" stroke="none" d="M-6.2 -2H6.2V5.2H-6.2Z"/>)");
            } else if (!m_free.empty()) {
                Station arrow{at + 5.0 * m_free[i], m_free[i]};
                if (boundary->isInlet) arrow = {at + 21.0 * m_free[i], -1.0 * m_free[i]};
                m_svg += placed(arrow, R"(<path d="M0 0H13M9 -3.6L15 0L9 3.6"/>)");
            }
        }
        m_svg += "</g>\n";
    }

    /// Names of all nodes and elements of a small network, where they find room.
    void drawNames()
    {
        if (!m_hasNames) return;
        m_svg += "<g paint-order=\"stroke\" stroke=\"#ffffff\" stroke-width=\"3\""
                 " stroke-linejoin=\"round\">\n";
        // a symbol beside its element is known by its name alone
        std::vector<const PlacedSymbol*> symbols(m_lines.size(), nullptr);
        for (const PlacedSymbol& symbol : m_symbols) {
            symbols[symbol.element] = &symbol;
            if (symbol.isBeside()) drawElementName(symbol.element, &symbol);
        }
        for (std::size_t i = 0; i < m_points.size(); ++i)
            drawNodeName(i);
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            if (symbols[e] == nullptr || !symbols[e]->isBeside()) drawElementName(e, symbols[e]);
        }
        m_svg += "</g>\n";
    }

    /// The centre of a text's box that stands beside a point.
    static Point2 beside(const Point2& at, const Point2& side, double gap, double wide)
    {
        const bool isDiagonal = side.x != 0.0 && side.y != 0.0;
        const double room = isDiagonal ? 0.5 * gap : gap;
        return {at.x + side.x * (room + 0.5 * wide), at.y + side.y * (room + 0.5 * kLetterHeight)};
    }

    void drawNodeName(std::size_t i)
    {
        const std::string& name = m_network.nodes[i].name;
        const double wide = textWidth(name, kNodeLetter);
        const double gap = m_network.nodes[i].boundary ? 10.0 : m_nodeRadius + 3.0;
        std::vector<Point2> sides(std::begin(kSides), std::end(kSides));
        std::stable_sort(sides.begin(), sides.end(), [&](const Point2& a, const Point2& b) {
            return a.x * m_free[i].x + a.y * m_free[i].y > b.x * m_free[i].x + b.y * m_free[i].y + 1e-6;
        });
        std::vector<Point2> centres;
        for (const double farther : {0.0, 14.0}) {
            for (const Point2& side : sides)
                centres.push_back(beside(m_points[i], side, gap + farther, wide));
        }
        writeName(name, centres, wide, "font-weight=\"500\"", kMostNames);
    }

    void drawElementName(std::size_t e, const PlacedSymbol* symbol)
    {
        const std::string& name = m_network.elements[e].name;
        const double wide = textWidth(name, kElementLetter);
        const double whole = lengthOfLine(m_lines[e]);
        std::vector<Point2> centres;
        if (symbol != nullptr && symbol->isBeside()) {
            for (const Point2& side : kSides)
                centres.push_back(beside(symbol->station.at, side, kSymbolRadius + 6.0, wide));
        } else if (whole >= 0.5 * wide) {
            const double gap = symbol != nullptr ? kSymbolRadius + 3.0 : 6.0;
            for (const double part : {0.5, 0.35, 0.65, 0.2, 0.8})
                addAcross(stationAt(m_lines[e], part * whole), gap, wide, centres);
        }
        writeName(name, centres, wide, "fill=\"" + std::string(kFaint) + "\" font-size=\"10\"", 0);
    }

    /// Centres of a text's box that stands across from a line without touching it, the upper or right one first.
    static void addAcross(const Station& station, double gap, double wide, std::vector<Point2>& centres)
    {
        Point2 across{station.along.y, -station.along.x};
        if (across.y > 0.35 || (across.y > -0.35 && across.x < 0.0)) across = -1.0 * across;
        const double reach = gap + 0.5 * (std::abs(across.x) * wide + std::abs(across.y) * kLetterHeight);
        centres.push_back(station.at + reach * across);
        centres.push_back(station.at - reach * across);
    }

    /// Writes a name where nothing else stands and the fewest lines pass, at most so many, the first of such places;
    /// leaves it out when there is none.
    void writeName(const std::string& name, const std::vector<Point2>& centres, double wide,
                   const std::string& attributes, std::size_t mostLines)
    {
        std::optional<Rectangle> best;
        std::size_t fewest = mostLines + 1;
        for (const Point2& centre : centres) {
            const Rectangle box{centre.x - 0.5 * wide, centre.y - 0.5 * kLetterHeight, centre.x + 0.5 * wide,
                                centre.y + 0.5 * kLetterHeight};
            const bool isInside = box.left > 2.0 && box.right < m_width - 2.0 && box.bottom < m_height - 2.0;
            if (!isInside || !m_taken.isFree(box)) continue;
            const std::size_t lines = m_taken.linesThrough(box);
            if (lines >= fewest) continue;
            fewest = lines;
            best = box;
            if (lines == 0) break;
        }
        if (!best) return;
        m_taken.take(*best);
        m_svg += textAt({0.5 * (best->left + best->right), best->top + 9.0},
                        "text-anchor=\"middle\" " + attributes, name);
    }

    static double legendTop() { return kHeader + 38.0; }
    double legendHeight() const { return std::min(240.0, m_height - kHeader - kFooter - 60.0); }

    void drawLegend()
    {
        if (m_values.empty()) return;
        const PictureColumn& column = columnOf(m_quantity);
        const std::string unit = displayUnit(m_options.units, column.unit);
        const double left = m_width - kLegendWidth;
        m_svg +=
            textAt({left, kHeader + 4.0}, "font-weight=\"600\" font-size=\"12\"", std::string(column.label));
        m_svg += textAt({left, kHeader + 20.0}, faintText(11), "in " + unit);
        const bool hasScale = m_range.high > m_range.low;
        const double tall = hasScale ? legendHeight() : kLegendLine;
        const std::size_t steps = hasScale ? kLegendSteps : 1;
        const double step = tall / static_cast<double>(steps);
        for (std::size_t i = 0; i < steps; ++i) {
            const double fraction = 1.0 - (static_cast<double>(i) + 0.5) / static_cast<double>(steps);
            m_svg += "<rect x=\"" + px(left) + "\" y=\"" + px(legendTop() + static_cast<double>(i) * step) +
                     "\" width=\"14\" height=\"" + px(step + (hasScale ? 0.4 : 0.0)) + "\" fill=\"" +
                     colourOf(fraction) + "\"/>\n";
        }
        if (!hasScale) {
            m_svg += textAt({left + 22.0, legendTop() + 0.5 * tall + 4.0}, "", shortNumber(m_range.low));
            m_svg += textAt({left, legendTop() + tall + 16.0}, faintText(10), "the same everywhere");
            return;
        }
        drawScale(left);
    }

    /// The numbers beside the colours: the ends of the scale and round ones between them.
    void drawScale(double left)
    {
        const double top = legendTop();
        const double tall = legendHeight();
        const auto mark = [&](double y, const std::string& label) {
            m_svg +=
                "<path stroke=\"" + std::string(kInk) + "\" d=\"M" + pointText({left + 14.0, y}) + "h4\"/>\n";
            m_svg += textAt({left + 22.0, y + 4.0}, "", label);
        };
        const std::vector<double> ticks = roundTicks(m_range.low, m_range.high, 5);
        const std::optional<int> decimals = decimalsOf(ticks);
        mark(top, (m_range.hasHigher ? "\u2265 " : "") + endLabel(m_range.high, decimals));
        mark(top + tall, (m_range.hasLower ? "\u2264 " : "") + endLabel(m_range.low, decimals));
        for (const double tick : ticks) {
            const double y = top + (1.0 - m_range.fraction(tick)) * tall;
            if (y - top >= kLegendLine && top + tall - y >= kLegendLine)
                mark(y, withDecimals(tick, decimals));
        }
        double under = top + tall + 20.0;
        const auto note = [&](const std::string& text) {
            m_svg += textAt({left, under}, faintText(10), text);
            under += 13.0;
        };
        if (m_range.hasHigher)
            note("up to " + shortNumber(*std::max_element(m_values.begin(), m_values.end(), below)));
        if (m_range.hasLower)
            note("down to " + shortNumber(*std::min_element(m_values.begin(), m_values.end(), above)));
    }

    static std::string faintText(int size)
    {
        return "font-size=\"" + std::to_string(size) + "\" fill=\"" + std::string(kFaint) + '"';
    }

    /// Order of values in which those that are no number come first.
    static bool below(double a, double b) { return std::isnan(b) ? false : std::isnan(a) || a < b; }

    /// The same where they come last.
    static bool above(double a, double b) { return std::isnan(a) ? false : std::isnan(b) || a < b; }

    const Network& m_network;
    const Solution* m_solution;
    const PictureOptions& m_options;
    Placement m_placement;
    View m_view;
    PictureQuantity m_quantity = PictureQuantity::none;
    std::vector<double> m_values;  // in display units, by node or element
    ColourRange m_range;
    double m_width = 0.0;
    double m_height = 0.0;
    double m_spacing = 0.0;     // [px], mean distance of nodes
    double m_lineWidth = 0.0;   // [px]
    double m_nodeRadius = 0.0;  // [px]
    std::vector<Point2> m_points;
    std::vector<std::vector<Point2>> m_lines;
    std::vector<Point2> m_free;  // where each node has most room; empty where no mark or name asks for it
    std::vector<Arrow> m_arrows;
    std::vector<PlacedSymbol> m_symbols;
    bool m_hasNames = false;
    Obstacles m_taken;
    std::string m_svg;
};

}  // namespace

std::string svgPicture(const Network& network, const Solution* solution, const PictureOptions& options)
{
    return Picture(network, solution, options).document();
}

}  // namespace kit
