// Writes variants of a mesh that look like scans and generated models: noisy, coarse or pinched.
//
//   mesh_variants MESH.obj OUT.obj noise SHARE [SEED]   vertices moved by Gaussian noise of SHARE
//                                                       mean edge lengths
//   mesh_variants MESH.obj OUT.obj reduce TRIANGLES     edges collapsed, least quadric error first
//   mesh_variants MESH.obj OUT.obj cluster CELLS        vertices merged on a grid of CELLS along
//                                                       the longest side of the bounding box
//   mesh_variants MESH.obj OUT.obj shuffle [SEED]       the same faces in another order
//   mesh_variants MESH.obj OUT.obj rotate [SEED]        turned by a random rotation
//
// `reduce` and `cluster` split polygons into fans. Materials, normals and texture coordinates are
// left out. The same arguments give the same file on every machine.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <queue>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Point {
    double x = 0, y = 0, z = 0;
};
Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
Point operator*(Point a, double s) { return {a.x * s, a.y * s, a.z * s}; }
double dot(Point a, Point b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Point cross(Point a, Point b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
double length(Point a) { return std::sqrt(dot(a, a)); }

using Face = std::vector<uint32_t>;
struct Soup {
    std::vector<Point> points;
    std::vector<Face> faces;
};

bool read(const char* name, Soup& soup) {
    std::ifstream file(name);
    std::string line;
    while (std::getline(file, line)) {
        std::istringstream words(line);
        std::string word;
        words >> word;
        if (word == "v") {
            Point p;
            words >> p.x >> p.y >> p.z;
            soup.points.push_back(p);
        } else if (word == "f") {
            Face face;
            while (words >> word) {
                const long id = std::strtol(word.c_str(), nullptr, 10);
                face.push_back(uint32_t(id > 0 ? id - 1 : long(soup.points.size()) + id));
            }
            soup.faces.push_back(face);
        }
    }
    return file.eof() && !soup.faces.empty();
}

bool write(const char* name, const Soup& soup) {
    std::FILE* file = std::fopen(name, "w");
    if (file == nullptr)
        return false;
    for (Point p : soup.points)
        std::fprintf(file, "v %.9g %.9g %.9g\n", p.x, p.y, p.z);
    for (const Face& face : soup.faces) {
        std::fputs("f", file);
        for (uint32_t v : face)
            std::fprintf(file, " %u", v + 1);
        std::fputs("\n", file);
    }
    return std::fclose(file) == 0;
}

void triangulate(Soup& soup) {
    std::vector<Face> triangles;
    for (const Face& face : soup.faces)
        for (size_t i = 2; i < face.size(); ++i)
            triangles.push_back({face[0], face[i - 1], face[i]});
    soup.faces = triangles;
}

/// Uniform in (0, 1), from the generator's bits alone: the library's distributions differ.
double uniform(std::mt19937& random) { return (double(random()) + 0.5) / 4294967296.0; }

double gaussian(std::mt19937& random) {
    const double radius = std::sqrt(-2 * std::log(uniform(random)));
    return radius * std::cos(6.283185307179586 * uniform(random));
}

void add_noise(Soup& soup, double share, uint32_t seed) {
    double sum = 0;
    size_t count = 0;
    for (const Face& face : soup.faces)
        for (size_t i = 0; i < face.size(); ++i, ++count)
            sum += length(soup.points[face[i]] - soup.points[face[(i + 1) % face.size()]]);
    const double size = share * sum / double(count);
    std::mt19937 random(seed);
    for (Point& p : soup.points) {
        const double x = gaussian(random), y = gaussian(random), z = gaussian(random);
        p = p + Point{x, y, z} * size;
    }
}

/// Drops faces with fewer than three different corners and points that no face uses.
void compact(Soup& soup) {
    std::vector<uint32_t> number(soup.points.size(), ~0u);
    std::vector<Point> points;
    std::vector<Face> faces;
    for (Face face : soup.faces) {
        if (std::set<uint32_t>(face.begin(), face.end()).size() < 3)
            continue;
        for (uint32_t& v : face) {
            if (number[v] == ~0u) {
                number[v] = uint32_t(points.size());
                points.push_back(soup.points[v]);
            }
            v = number[v];
        }
        faces.push_back(face);
    }
    soup.points = points;
    soup.faces = faces;
}

void cluster(Soup& soup, int cells) {
    Point low = soup.points[0], high = low;
    for (Point p : soup.points) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    const Point size = high - low;
    const double cell = std::max({size.x, size.y, size.z}) / cells;
    std::map<std::array<long, 3>, uint32_t> place;
    std::vector<Point> sum;
    std::vector<double> count;
    std::vector<uint32_t> target;
    for (Point p : soup.points) {
        const Point at = (p - low) * (1 / cell);
        const auto found =
            place.insert({{long(at.x), long(at.y), long(at.z)}, uint32_t(sum.size())}).first;
        if (found->second == sum.size()) {
            sum.push_back({});
            count.push_back(0);
        }
        sum[found->second] = sum[found->second] + p;
        count[found->second] += 1;
        target.push_back(found->second);
    }
    for (size_t i = 0; i < sum.size(); ++i)
        sum[i] = sum[i] * (1 / count[i]);
    soup.points = sum;
    std::set<Face> seen;
    std::vector<Face> kept;
    for (Face face : soup.faces) {
        for (uint32_t& v : face)
            v = target[v];
        Face sorted = face;
        std::sort(sorted.begin(), sorted.end());
        if (seen.insert(sorted).second)
            kept.push_back(face);
    }
    soup.faces = kept;
    compact(soup);
}

/// Edge collapse by quadric error (Garland and Heckbert, "Surface simplification using quadric
/// error metrics", 1997), to the midpoint or an end, whichever costs least; a collapse that would
/// turn a normal over or pinch the surface is left out.
class Reducer {
public:
    explicit Reducer(Soup& soup) : soup_(soup), quadric_(soup.points.size()) {
        around_.resize(soup.points.size());
        stamp_.assign(soup.points.size(), 0);
        for (uint32_t f = 0; f < soup.faces.size(); ++f) {
            const Face& t = soup.faces[f];
            const Point n =
                cross(soup.points[t[1]] - soup.points[t[0]], soup.points[t[2]] - soup.points[t[0]]);
            const double size = length(n);
            for (uint32_t v : t) {
                around_[v].push_back(f);
                if (size > 0)
                    add_plane(quadric_[v], n * (1 / size), soup.points[t[0]], size);
            }
        }
    }
    void run(size_t wanted) {
        size_t left = soup_.faces.size();
        for (const Face& t : soup_.faces)
            for (size_t k = 0; k < 3; ++k)
                push(t[k], t[(k + 1) % 3]);
        while (left > wanted && !queue_.empty()) {
            const Collapse c = queue_.top();
            queue_.pop();
            if (c.stamp == stamp_[c.a] + stamp_[c.b] && !around_[c.a].empty() &&
                !around_[c.b].empty())
                left -= collapse(c);
        }
        compact(soup_);
    }

private:
    using Quadric = std::array<double, 10>;
    struct Collapse {
        double cost;
        uint32_t a, b, stamp;
        Point to;
        bool operator<(const Collapse& o) const {
            return cost != o.cost ? cost > o.cost : a != o.a ? a > o.a : b > o.b;
        }
    };
    static void add_plane(Quadric& q, Point n, Point on, double weight) {
        const double d = -dot(n, on), v[4] = {n.x, n.y, n.z, d};
        for (int i = 0, k = 0; i < 4; ++i)
            for (int j = i; j < 4; ++j)
                q[size_t(k++)] += weight * v[i] * v[j];
    }
    double error(uint32_t a, uint32_t b, Point p) const {
        const double v[4] = {p.x, p.y, p.z, 1};
        double sum = 0;
        for (int i = 0, k = 0; i < 4; ++i)
            for (int j = i; j < 4; ++j, ++k)
                sum += (quadric_[a][size_t(k)] + quadric_[b][size_t(k)]) * v[i] * v[j] *
                       (i == j ? 1 : 2);
        return sum;
    }
    void push(uint32_t a, uint32_t b) {
        if (a > b)
            std::swap(a, b);
        const Point p = soup_.points[a], q = soup_.points[b];
        Collapse best{1e300, a, b, stamp_[a] + stamp_[b], p};
        for (Point to : {(p + q) * 0.5, p, q}) {
            const double cost = error(a, b, to) + 1e-9 * dot(p - q, p - q);
            if (cost < best.cost)
                best.cost = cost, best.to = to;
        }
        queue_.push(best);
    }
    std::set<uint32_t> ring(uint32_t v) const {
        std::set<uint32_t> found;
        for (uint32_t f : around_[v])
            found.insert(soup_.faces[f].begin(), soup_.faces[f].end());
        found.erase(v);
        return found;
    }
    bool turns_over(uint32_t v, uint32_t other, Point to) const {
        for (uint32_t f : around_[v]) {
            const Face& t = soup_.faces[f];
            if (std::count(t.begin(), t.end(), other) != 0)
                continue;
            Point p[3], q[3];
            for (size_t k = 0; k < 3; ++k) {
                p[k] = soup_.points[t[k]];
                q[k] = t[k] == v ? to : p[k];
            }
            const Point n = cross(p[1] - p[0], p[2] - p[0]), m = cross(q[1] - q[0], q[2] - q[0]);
            if (dot(n, m) <= 0.2 * length(n) * length(m))
                return true;
        }
        return false;
    }
    size_t collapse(const Collapse& c) {
        const std::set<uint32_t> ring_a = ring(c.a), ring_b = ring(c.b);
        std::vector<uint32_t> common;
        std::set_intersection(ring_a.begin(), ring_a.end(), ring_b.begin(), ring_b.end(),
                              std::back_inserter(common));
        if (common.size() != 2 || turns_over(c.a, c.b, c.to) || turns_over(c.b, c.a, c.to))
            return 0;
        size_t gone = 0;
        soup_.points[c.a] = c.to;
        for (uint32_t f : around_[c.b]) {
            Face& t = soup_.faces[f];
            if (std::count(t.begin(), t.end(), c.a) != 0) {
                for (uint32_t v : t)
                    if (v != c.b)
                        around_[v].erase(std::find(around_[v].begin(), around_[v].end(), f));
                t = {0, 0, 0};
                ++gone;
            } else {
                std::replace(t.begin(), t.end(), c.b, c.a);
                around_[c.a].push_back(f);
            }
        }
        around_[c.b].clear();
        for (size_t k = 0; k < 10; ++k)
            quadric_[c.a][k] += quadric_[c.b][k];
        ++stamp_[c.a];
        for (uint32_t v : ring(c.a))
            push(c.a, v);
        return gone;
    }

    Soup& soup_;
    std::vector<Quadric> quadric_;
    std::vector<std::vector<uint32_t>> around_;
    std::vector<uint32_t> stamp_;
    std::priority_queue<Collapse> queue_;
};

void shuffle(Soup& soup, uint32_t seed) {
    std::mt19937 random(seed);
    for (size_t i = soup.faces.size(); i > 1; --i)
        std::swap(soup.faces[i - 1], soup.faces[random() % i]);
}

void rotate(Soup& soup, uint32_t seed) {
    std::mt19937 random(seed);
    double q[4], size = 0;
    for (double& part : q) {
        part = gaussian(random);
        size += part * part;
    }
    for (double& part : q)
        part /= std::sqrt(size);
    const Point axis{q[1], q[2], q[3]};
    for (Point& p : soup.points) {
        const Point t = cross(axis, p) * 2;
        p = p + t * q[0] + cross(axis, t);
    }
}

bool change(Soup& soup, const std::string& how, double amount, uint32_t seed) {
    if (how == "shuffle" || how == "rotate") {
        how == "shuffle" ? shuffle(soup, uint32_t(amount)) : rotate(soup, uint32_t(amount));
        return true;
    }
    if (how == "noise") {
        add_noise(soup, amount, seed);
        return true;
    }
    triangulate(soup);
    if (how == "reduce")
        Reducer(soup).run(size_t(amount));
    else if (how == "cluster")
        cluster(soup, int(amount));
    else
        return false;
    return true;
}

} // namespace

int main(int count, char** words) {
    const std::string how = count > 3 ? words[3] : "";
    const double amount = count > 4 ? std::atof(words[4]) : 1;
    const uint32_t seed = count > 5 ? uint32_t(std::atoi(words[5])) : 1;
    Soup soup;
    if (count < 4 || (count < 5 && how != "shuffle" && how != "rotate")) {
        std::fputs("usage: mesh_variants MESH.obj OUT.obj noise SHARE [SEED] | reduce TRIANGLES | "
                   "cluster CELLS | shuffle [SEED] | rotate [SEED]\n",
                   stderr);
        return 2;
    }
    if (!read(words[1], soup)) {
        std::fprintf(stderr, "%s: cannot be read, or holds no faces\n", words[1]);
        return 3;
    }
    if (!change(soup, how, amount, seed)) {
        std::fprintf(stderr, "mesh_variants: %s is no variant; see the usage\n", how.c_str());
        return 2;
    }
    if (!write(words[2], soup)) {
        std::fprintf(stderr, "%s: cannot be written\n", words[2]);
        return 7;
    }
    return 0;
}
