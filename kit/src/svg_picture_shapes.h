// svg_picture_shapes.h: points, lines and places of a still picture. Lengths are its units, y runs downwards.
#ifndef TAVELL_KIT_SVG_PICTURE_SHAPES_H
#define TAVELL_KIT_SVG_PICTURE_SHAPES_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "picture_layout.h"

namespace kit
{

/// A place on a line and the direction of the line there, length 1.
struct Station {
    Point2 at;
    Point2 along{1.0, 0.0};
};

struct Rectangle {
    double left, top, right, bottom;
};

/// A length of the drawing with at most two decimals.
std::string px(double value);
std::string pointText(const Point2& point);
Point2 operator+(const Point2& a, const Point2& b);
Point2 operator-(const Point2& a, const Point2& b);
Point2 operator*(double factor, const Point2& a);
double length(const Point2& a);
double lengthOfLine(const std::vector<Point2>& line);
Station stationAt(const std::vector<Point2>& line, double distance);
/// Whether a byte of UTF-8 starts a letter.
bool startsLetter(char byte);
/// [px], about; letters of the wider sans-serif faces.
double textWidth(const std::string& text, double letterWidth);
Rectangle around(const Point2& a, const Point2& b, double margin);
/// Whether a line from a to b passes through a rectangle (clipping of Liang and Barsky, 1984).
bool passes(const Point2& a, const Point2& b, const Rectangle& box);
/// The part of a line between two distances from its start.
std::vector<Point2> partOf(const std::vector<Point2>& line, double from, double to);
/// A path of a drawing through all points.
std::string pathThrough(const std::vector<Point2>& line);

/// What names keep off: other names, symbols and arrows always, lines where they can.
class Obstacles
{
public:
    void take(const Rectangle& rectangle) { m_list.push_back(rectangle); }
    void addLine(const std::vector<Point2>& line);
    bool isFree(const Rectangle& wanted) const;
    std::size_t linesThrough(const Rectangle& box) const;

private:
    std::vector<Rectangle> m_list;
    std::vector<std::pair<Point2, Point2>> m_lines;
};

}  // namespace kit

#endif
