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
constexpr double kFlattest = 0.35;
constexpr double kTallest = 0.85;
/// [px], elements shorter than this have no arrow.
constexpr double kShortestWithArrow = 26.0;
/// [px], nodes closer than this have no arrows of given flows.
constexpr double kClosestFlowMarks = 18.0;
/// Nodes and elements whose names are written.
constexpr std::size_t kMostNames = 120;
constexpr std::size_t kLegendSteps = 48;

constexpr std::string_view kInk = "#1c2530";
constexpr std::string_view kFaint = "#66717e";
constexpr std::string_view kPlain = "#7a8794";

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

/// A length of the drawing with at most two decimals.
std::string px(double value)
{
    std::array<char, 64> text{};
    const double rounded = std::round(value * 100.0) / 100.0;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), rounded + 0.0);
    return {text.data(), end.ptr};
}

std::string pair(const Point2& point)
{
    return px(point.x) + ' ' + px(point.y);
}

Point2 operator+(const Point2& a, const Point2& b)
{
    return {a.x + b.x, a.y + b.y};
}

Point2 operator-(const Point2& a, const Point2& b)
{
    return {a.x - b.x, a.y - b.y};
}

Point2 operator*(double factor, const Point2& a)
{
    return {factor * a.x, factor * a.y};
}

double length(const Point2& a)
{
    return std::hypot(a.x, a.y);
}

/// A place on a line and the direction of the line there, length 1.
struct Station {
    Point2 at;
    Point2 along{1.0, 0.0};
};

double lengthOfLine(const std::vector<Point2>& line)
{
    double sum = 0.0;
    for (std::size_t i = 1; i < line.size(); ++i)
        sum += length(line[i] - line[i - 1]);
    return sum;
}

Station stationAt(const std::vector<Point2>& line, double distance)
{
    for (std::size_t i = 1; i < line.size(); ++i) {
        const Point2 step = line[i] - line[i - 1];
        const double size = length(step);
        if (size > 0.0 && (distance <= size || i + 1 == line.size())) {
            const Point2 along = (1.0 / size) * step;
            return {line[i - 1] + std::min(distance, size) * along, along};
        }
        distance -= size;
    }
    return {line.front(), {1.0, 0.0}};
}

/// A small drawing with its origin at a station and its x axis along the line there.
std::string placed(const Station& station, const std::string& drawing, double size = 1.0)
{
    const Point2 along = size * station.along;
    const std::string text = "<g transform=\"matrix(" + pair(along) + ' ' + px(-along.y) + ' ' + px(along.x) +
                             ' ' + pair(station.at) + ")\">";
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

/// Whether a byte of UTF-8 starts a letter.
bool startsLetter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80U;
}

/// [px], about; letters of the sans-serif face at 11 px.
double textWidth(const std::string& text)
{
    return 6.2 * static_cast<double>(std::count_if(text.begin(), text.end(), startsLetter));
}

std::string counted(std::size_t count, const std::string& what)
{
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

/// Rectangles that are taken by names and symbols.
class TakenPlaces
{
public:
    struct Rectangle {
        double left, top, right, bottom;
    };
    bool take(const Rectangle& wanted)
    {
        for (const Rectangle& other : m_list) {
            if (wanted.left < other.right && other.left < wanted.right && wanted.top < other.bottom &&
                other.top < wanted.bottom)
                return false;
        }
        m_list.push_back(wanted);
        return true;
    }

private:
    std::vector<Rectangle> m_list;
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
        drawHeader();
        drawElements();
        drawArrows();
        drawSymbols();
        drawNodes();
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
        constexpr double kMax = std::numeric_limits<double>::max();
        Point2 low{kMax, kMax};
        Point2 high{-kMax, -kMax};
        const auto see = [&](const Point3& at) {
            const Point2 point = project(at, m_view, m_placement);
            low = {std::min(low.x, point.x), std::min(low.y, point.y)};
            high = {std::max(high.x, point.x), std::max(high.y, point.y)};
            return point;
        };
        for (const Point3& at : m_placement.nodes)
            m_points.push_back(see(at));
        for (std::size_t e = 0; e < m_network.elements.size(); ++e) {
            std::vector<Point2> line{m_points[m_network.elements[e].from]};
            for (const Point3& vertex : m_placement.vertices[e])
                line.push_back(see(vertex));
            line.push_back(m_points[m_network.elements[e].to]);
            m_lines.push_back(std::move(line));
        }
        if (m_points.empty()) low = high = {};

        const double wide = m_width - 2.0 * kMargin - (m_values.empty() ? 0.0 : kLegendWidth);
        const Point2 extent = high - low;
        const double wanted = extent.x > 0.0 ? wide * extent.y / extent.x : wide;
        const double tall = std::clamp(wanted, kFlattest * wide, kTallest * wide);
        m_height = kHeader + kMargin + tall + kFooter;
        double scale = kMax;
        if (extent.x > 0.0) scale = std::min(scale, wide / extent.x);
        if (extent.y > 0.0) scale = std::min(scale, tall / extent.y);
        if (!(scale < kMax)) scale = 1.0;
        const Point2 middle = 0.5 * (low + high);
        const Point2 centre{kMargin + 0.5 * wide, kHeader + 0.5 * kMargin + 0.5 * tall};
        const auto move = [&](Point2& point) {
            point = {centre.x + scale * (point.x - middle.x), centre.y - scale * (point.y - middle.y)};
        };
        std::for_each(m_points.begin(), m_points.end(), move);
        for (std::vector<Point2>& line : m_lines)
            std::for_each(line.begin(), line.end(), move);
        spreadParallels();

        const double area = wide * tall / static_cast<double>(std::max<std::size_t>(1, m_points.size()));
        m_spacing = std::sqrt(area);
        m_lineWidth = std::clamp(m_spacing / 16.0, 0.8, 3.0);
        m_hasNames = m_points.size() <= kMostNames && m_lines.size() <= kMostNames;
        m_free = freeDirections();
    }

    /// Elements that join the same two nodes are bent apart.
    void spreadParallels()
    {
        std::map<std::pair<std::size_t, std::size_t>, int> seen;
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const Element& element = m_network.elements[e];
            if (m_lines[e].size() > 2 || element.from == element.to) continue;
            const int before = seen[std::minmax(element.from, element.to)]++;
            if (before == 0) continue;
            const double side = (before % 2 == 0) == (element.from > element.to) ? 1.0 : -1.0;
            const int row = (before + 1) / 2;
            const double offset = 0.12 * row * side;
            const Point2 step = m_lines[e][1] - m_lines[e][0];
            const Point2 away{-step.y * offset, step.x * offset};
            m_lines[e] = {m_lines[e][0], m_lines[e][0] + 0.25 * step + away,
                          m_lines[e][0] + 0.75 * step + away, m_lines[e][1]};
        }
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
        if (!hasResults()) line += "; no results";
        if (hasResults() && m_solution->outcome != Outcome::converged) line += "; not converged";
        m_svg += textAt({kMargin, 54.0}, "font-size=\"12\" fill=\"" + std::string(kFaint) + '"', line);
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

    /// Keeps names off a rectangle.
    void take(const TakenPlaces::Rectangle& rectangle)
    {
        if (m_hasNames) m_taken.take(rectangle);
    }

    std::string colourOfElement(std::size_t e) const
    {
        if (m_values.empty()) return std::string(kPlain);
        double value = 0.0;
        if (columnOf(m_quantity).isOfNodes)
            value = 0.5 * (m_values[m_network.elements[e].from] + m_values[m_network.elements[e].to]);
        else
            value = m_values[e];
        return std::isfinite(value) ? colourOf(m_range.fraction(value)) : std::string(kPlain);
    }

    void drawElements()
    {
        m_svg += "<g fill=\"none\" stroke-linecap=\"round\" stroke-linejoin=\"round\" stroke-width=\"" +
                 px(m_lineWidth) + "\">\n";
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const bool isClosed = m_network.elements[e].isClosed;
            m_svg += "<path stroke=\"" + (isClosed ? "#b3bac2" : colourOfElement(e)) + '"';
            if (isClosed) m_svg += " stroke-dasharray=\"4 4\"";
            m_svg += " d=\"M" + pair(m_lines[e].front());
            for (std::size_t i = 1; i < m_lines[e].size(); ++i)
                m_svg += 'L' + pair(m_lines[e][i]);
            m_svg += "\"/>\n";
        }
        m_svg += "</g>\n";
    }

    void drawArrows()
    {
        if (!hasResults()) return;
        double largest = 0.0;
        for (const double flow : m_solution->massFlow) {
            if (std::isfinite(flow)) largest = std::max(largest, std::abs(flow));
        }
        const double size = std::clamp(2.2 * m_lineWidth, 4.0, 7.0);
        std::string arrows;
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const double flow = m_solution->massFlow[e];
            const double whole = lengthOfLine(m_lines[e]);
            if (m_network.elements[e].isClosed || !(std::abs(flow) > 1e-7 * largest) ||
                whole < kShortestWithArrow)
                continue;
            const bool hasSymbol = symbolOf(m_network.elements[e]) != Symbol::none;
            if (hasSymbol && whole < 3.0 * kShortestWithArrow) continue;
            const Station station = stationAt(m_lines[e], (hasSymbol ? 0.75 : 0.5) * whole);
            const Point2 along = (flow > 0.0 ? size : -size) * station.along;
            const Point2 side{-0.6 * along.y, 0.6 * along.x};
            arrows += 'M' + pair(station.at + along) + 'L' + pair(station.at - 0.6 * along + side) + 'L' +
                      pair(station.at - 0.6 * along - side) + 'Z';
        }
        if (arrows.empty()) return;
        m_svg += "<path fill=\"" + std::string(kInk) + "\" d=\"" + arrows + "\"/>\n";
    }

    void drawSymbols()
    {
        m_svg += "<g fill=\"#ffffff\" stroke=\"" + std::string(kInk) +
                 "\" stroke-width=\"1.4\" stroke-linejoin=\"round\">\n";
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const Element& element = m_network.elements[e];
            const Symbol symbol = symbolOf(element);
            if (symbol == Symbol::none && !element.isClosed) continue;
            const double whole = lengthOfLine(m_lines[e]);
            if (symbol != Symbol::pump && m_spacing < 14.0 && whole < kShortestWithArrow / 3.0) continue;
            const Station middle = stationAt(m_lines[e], 0.5 * whole);
            const double size = std::clamp(whole / 34.0, 0.5, 1.0);
            if (symbol != Symbol::none) {
                m_svg += placed(middle, drawingOf(symbol), size);
                take({middle.at.x - 9.0, middle.at.y - 9.0, middle.at.x + 9.0, middle.at.y + 9.0});
            }
            if (element.isClosed)
                m_svg +=
                    placed(middle, R"(<path fill="none" stroke-width="2" d="M-5 -5L5 5M-5 5L5 -5"/>)", size);
        }
        m_svg += "</g>\n";
    }

    void drawNodes()
    {
        const double radius = std::clamp(m_spacing / 14.0, 0.0, 4.0);
        if (radius < 1.0) return;
        const bool isColoured = !m_values.empty() && columnOf(m_quantity).isOfNodes;
        m_svg += "<g stroke=\"#ffffff\" stroke-width=\"1\">\n";
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const Point2& at = m_points[i];
            std::string colour(kInk);
            if (isColoured)
                colour = std::isfinite(m_values[i]) ? colourOf(m_range.fraction(m_values[i]))
                                                    : std::string(kPlain);
            m_svg += "<circle cx=\"" + px(at.x) + "\" cy=\"" + px(at.y) + "\" r=\"" + px(radius) +
                     "\" fill=\"" + colour + "\"/>\n";
            take({at.x - radius, at.y - radius, at.x + radius, at.y + radius});
        }
        m_svg += "</g>\n";
    }

    /// The direction in which a node has most room: away from its neighbours.
    std::vector<Point2> freeDirections() const
    {
        std::vector<Point2> sum(m_points.size());
        const auto leave = [&](std::size_t node, const Point2& step) {
            if (length(step) > 0.0) sum[node] = sum[node] - (1.0 / length(step)) * step;
        };
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const std::vector<Point2>& line = m_lines[e];
            leave(m_network.elements[e].from, line[1] - line[0]);
            leave(m_network.elements[e].to, line[line.size() - 2] - line.back());
        }
        for (Point2& direction : sum)
            direction = length(direction) > 0.2 ? (1.0 / length(direction)) * direction : Point2{0.0, -1.0};
        return sum;
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
                take({at.x - 8.0, at.y - 8.0, at.x + 8.0, at.y + 8.0});
            } else if (m_spacing >= kClosestFlowMarks) {
                Station arrow{at + 5.0 * m_free[i], m_free[i]};
                if (boundary->isInlet) arrow = {at + 21.0 * m_free[i], -1.0 * m_free[i]};
                m_svg += placed(arrow, R"(<path d="M0 0H13M9 -3.6L15 0L9 3.6"/>)");
                const Point2 middle = at + 12.0 * m_free[i];
                take({middle.x - 8.0, middle.y - 8.0, middle.x + 8.0, middle.y + 8.0});
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
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const auto fit = [&](const Point2& side) { return side.x * m_free[i].x + side.y * m_free[i].y; };
            drawName(m_points[i], m_network.nodes[i].name, "font-weight=\"500\"", 10.0, fit);
        }
        for (std::size_t e = 0; e < m_lines.size(); ++e) {
            const std::string& name = m_network.elements[e].name;
            const double whole = lengthOfLine(m_lines[e]);
            if (whole < 0.8 * textWidth(name)) continue;
            const Station middle = stationAt(m_lines[e], 0.5 * whole);
            const double gap = symbolOf(m_network.elements[e]) == Symbol::none ? 6.0 : 12.0;
            const auto fit = [&](const Point2& side) {
                return std::abs(side.y * middle.along.x - side.x * middle.along.y);
            };
            drawName(middle.at, name, "fill=\"" + std::string(kFaint) + "\" font-size=\"10\"", gap, fit);
        }
        m_svg += "</g>\n";
    }

    /// Writes a name beside a point where nothing else stands, on the side that fits best; leaves it out when
    /// there is no such place.
    template <class Fit>
    void drawName(const Point2& at, const std::string& name, const std::string& attributes, double gap,
                  Fit fit)
    {
        const double wide = textWidth(name);
        constexpr double kTall = 11.0;
        std::array<Point2, 4> sides{Point2{1.0, 0.0}, Point2{0.0, -1.0}, Point2{0.0, 1.0}, Point2{-1.0, 0.0}};
        std::stable_sort(sides.begin(), sides.end(),
                         [&](const Point2& a, const Point2& b) { return fit(a) > fit(b) + 1e-9; });
        for (const Point2& side : sides) {
            const Point2 corner{at.x + side.x * (gap + 0.5 * wide) - 0.5 * wide,
                                at.y + side.y * (gap + 0.5 * kTall) - 0.5 * kTall};
            const bool isInside = corner.x > 2.0 && corner.x + wide < m_width - 2.0;
            if (!isInside || !m_taken.take({corner.x, corner.y, corner.x + wide, corner.y + kTall})) continue;
            m_svg += textAt({corner.x, corner.y + 9.0}, attributes, name);
            return;
        }
    }

    void drawLegend()
    {
        if (m_values.empty()) return;
        const PictureColumn& column = columnOf(m_quantity);
        const std::string unit = displayUnit(m_options.units, column.unit);
        const double left = m_width - kLegendWidth;
        const double tall = std::min(240.0, m_height - kHeader - kFooter - 60.0);
        const double top = kHeader + 38.0;
        m_svg +=
            textAt({left, kHeader + 4.0}, "font-weight=\"600\" font-size=\"12\"", std::string(column.label));
        m_svg += textAt({left, kHeader + 20.0}, "fill=\"" + std::string(kFaint) + '"', "in " + unit);
        const double step = tall / static_cast<double>(kLegendSteps);
        for (std::size_t i = 0; i < kLegendSteps; ++i) {
            const double fraction = 1.0 - (static_cast<double>(i) + 0.5) / static_cast<double>(kLegendSteps);
            m_svg += "<rect x=\"" + px(left) + "\" y=\"" + px(top + static_cast<double>(i) * step) +
                     "\" width=\"14\" height=\"" + px(step + 0.4) + "\" fill=\"" + colourOf(fraction) +
                     "\"/>\n";
        }
        for (const double tick : roundTicks(m_range.low, m_range.high, 5)) {
            const double y = top + (1.0 - m_range.fraction(tick)) * tall;
            m_svg += "<path stroke=\"" + std::string(kInk) + "\" d=\"M" + pair({left + 14.0, y}) + "h4\"/>\n";
            std::string label = shortNumber(tick);
            if (m_range.hasHigher && tick >= m_range.high) label.insert(0, "\u2265 ");
            m_svg += textAt({left + 22.0, y + 4.0}, "", label);
        }
        std::string note;
        if (m_range.hasHigher)
            note = "up to " + shortNumber(*std::max_element(m_values.begin(), m_values.end(), below));
        if (!note.empty())
            m_svg += textAt({left, top + tall + 16.0}, "font-size=\"10\" fill=\"" + std::string(kFaint) + '"',
                            note);
    }

    /// Order of values in which those that are no number come first.
    static bool below(double a, double b) { return std::isnan(b) ? false : std::isnan(a) || a < b; }

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
    double m_spacing = 0.0;    // [px], mean distance of nodes
    double m_lineWidth = 0.0;  // [px]
    std::vector<Point2> m_points;
    std::vector<std::vector<Point2>> m_lines;
    std::vector<Point2> m_free;  // where each node has most room
    bool m_hasNames = false;
    TakenPlaces m_taken;
    std::string m_svg;
};

}  // namespace

std::string svgPicture(const Network& network, const Solution* solution, const PictureOptions& options)
{
    return Picture(network, solution, options).document();
}

}  // namespace kit
