#include <algorithm>
#include <functional>
#include <limits>

#include "core/platform/FLKPoint.h"
#include "core/platform/FLKRect.h"

namespace {
std::optional<double> numberAt(const FLKJSON& d, const char* key) {
    if (!d.is_object()) return std::nullopt;
    auto it = d.find(key);
    if (it == d.end() || !it->is_number()) return std::nullopt;
    return it->get<double>();
}
}  // namespace

FLKJSON FLKPoint::dictionaryRepresentation() const {
    FLKJSON d = FLKJSON::object();
    d["X"] = x;
    d["Y"] = y;
    return d;
}

std::optional<FLKPoint> FLKPoint::fromDictionary(const FLKJSON& dictionary) {
    auto x = numberAt(dictionary, "X");
    auto y = numberAt(dictionary, "Y");
    if (!x || !y) return std::nullopt;
    return FLKPoint{*x, *y};
}

size_t hashValue(const FLKPoint& p) {
    size_t h = std::hash<double>{}(p.x);
    return h ^ (std::hash<double>{}(p.y) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2));
}

FLKRect FLKRect::null() {
    constexpr double inf = std::numeric_limits<double>::infinity();
    return FLKRect(inf, inf, 0, 0);
}

FLKRect FLKRect::fromPoints(FLKPoint a, FLKPoint b) {
    return FLKRect(std::min(a.x, b.x), std::min(a.y, b.y), std::abs(a.x - b.x), std::abs(a.y - b.y));
}

bool FLKRect::isNull() const { return std::isinf(origin.x) || std::isinf(origin.y); }

bool FLKRect::isEmpty() const { return isNull() || size.width == 0 || size.height == 0; }

FLKRect FLKRect::standardized() const {
    if (isNull()) return null();
    FLKRect r = *this;
    if (r.size.width < 0) {
        r.origin.x += r.size.width;
        r.size.width = -r.size.width;
    }
    if (r.size.height < 0) {
        r.origin.y += r.size.height;
        r.size.height = -r.size.height;
    }
    return r;
}

double FLKRect::minX() const { return standardized().origin.x; }
double FLKRect::minY() const { return standardized().origin.y; }
double FLKRect::maxX() const { auto s = standardized(); return s.origin.x + s.size.width; }
double FLKRect::maxY() const { auto s = standardized(); return s.origin.y + s.size.height; }
double FLKRect::midX() const { auto s = standardized(); return s.origin.x + s.size.width / 2; }
double FLKRect::midY() const { auto s = standardized(); return s.origin.y + s.size.height / 2; }
double FLKRect::width() const { return std::abs(size.width); }
double FLKRect::height() const { return std::abs(size.height); }

FLKRect FLKRect::unionWith(const FLKRect& other) const {
    if (isNull()) return other.standardized();
    if (other.isNull()) return standardized();
    double x0 = std::min(minX(), other.minX());
    double y0 = std::min(minY(), other.minY());
    double x1 = std::max(maxX(), other.maxX());
    double y1 = std::max(maxY(), other.maxY());
    return FLKRect(x0, y0, x1 - x0, y1 - y0);
}

FLKRect FLKRect::intersection(const FLKRect& other) const {
    if (isNull() || other.isNull()) return null();
    double x0 = std::max(minX(), other.minX());
    double y0 = std::max(minY(), other.minY());
    double x1 = std::min(maxX(), other.maxX());
    double y1 = std::min(maxY(), other.maxY());
    if (x1 < x0 || y1 < y0) return null();
    return FLKRect(x0, y0, x1 - x0, y1 - y0);
}

bool FLKRect::intersects(const FLKRect& other) const {
    FLKRect r = intersection(other);
    return !r.isNull() && r.size.width > 0 && r.size.height > 0;
}

bool FLKRect::containsPoint(FLKPoint p) const {
    if (isNull()) return false;
    return p.x >= minX() && p.x < maxX() && p.y >= minY() && p.y < maxY();
}

bool FLKRect::containsRect(const FLKRect& other) const {
    if (isNull() || other.isNull()) return false;
    return other.minX() >= minX() && other.maxX() <= maxX() && other.minY() >= minY() &&
           other.maxY() <= maxY();
}

FLKRect FLKRect::insetBy(double dx, double dy) const {
    if (isNull()) return null();
    FLKRect s = standardized();
    s.origin.x += dx;
    s.origin.y += dy;
    s.size.width -= 2 * dx;
    s.size.height -= 2 * dy;
    if (s.size.width < 0 || s.size.height < 0) return null();
    return s;
}

FLKRect FLKRect::offsetBy(double dx, double dy) const {
    if (isNull()) return null();
    return FLKRect(origin.x + dx, origin.y + dy, size.width, size.height);
}

bool operator==(const FLKRect& a, const FLKRect& b) {
    if (a.isNull() || b.isNull()) return a.isNull() && b.isNull();
    return a.origin == b.origin && a.size == b.size;
}

FLKJSON FLKRect::dictionaryRepresentation() const {
    FLKJSON d = FLKJSON::object();
    d["X"] = origin.x;
    d["Y"] = origin.y;
    d["Width"] = size.width;
    d["Height"] = size.height;
    return d;
}

std::optional<FLKRect> FLKRect::fromDictionary(const FLKJSON& dictionary) {
    auto x = numberAt(dictionary, "X");
    auto y = numberAt(dictionary, "Y");
    auto w = numberAt(dictionary, "Width");
    auto h = numberAt(dictionary, "Height");
    if (!x || !y || !w || !h) return std::nullopt;
    return FLKRect(*x, *y, *w, *h);
}
