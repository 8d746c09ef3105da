// The compiled half of the Python package: arrays in, arrays out. What a caller may pass, and how
// it becomes these arrays, is in tessora/__init__.py.
#include "atlas/polygon_mesh.h"
#include "atlas/polygons/threads.h"
#include "atlas/polygons/triangles.h"
#include "atlas/progress.h"
#include "measure/verify.h"

#include <chrono>
#include <optional>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <utility>

namespace py = pybind11;
namespace atlas = tessora::atlas;

namespace {

const char* name_of(atlas::Status status) {
    constexpr const char* k_names[] = {"ok",
                                       "invalid_argument",
                                       "index_out_of_range",
                                       "neighbour_out_of_range",
                                       "not_finite",
                                       "does_not_fit",
                                       "chart_limit",
                                       "cancelled",
                                       "out_of_memory",
                                       "kept_charts_collide",
                                       "kept_chart_outside"};
    return k_names[static_cast<size_t>(status)];
}

/// Raises tessora.Error, or MemoryError.
[[noreturn]] void raise(const atlas::Fault& fault) {
    if (fault.status == atlas::Status::out_of_memory)
        throw std::bad_alloc();
    const py::object type = py::module_::import("tessora._errors").attr("Error");
    const py::object element =
        fault.element == atlas::k_none ? py::object(py::none()) : py::int_(fault.element);
    const py::object error = type(fault.text, name_of(fault.status), element);
    PyErr_SetObject(type.ptr(), error.ptr());
    throw py::error_already_set();
}

atlas::Type type_of(const py::array& array) {
    const char kind = array.dtype().kind();
    const py::ssize_t size = array.itemsize();
    if (kind == 'f')
        return size == 4 ? atlas::Type::float32
                         : (size == 8 ? atlas::Type::float64 : atlas::Type::none);
    if (kind == 'u' || kind == 'b')
        return size == 1   ? atlas::Type::uint8
               : size == 2 ? atlas::Type::uint16
               : size == 4 ? atlas::Type::uint32
                           : atlas::Type::none;
    return atlas::Type::none;
}

/// The first axis counts the elements and may have any stride; the others have no gaps.
atlas::Array view(const std::optional<py::array>& array) {
    if (!array || array->size() == 0)
        return {};
    return {array->data(), static_cast<size_t>(array->shape(0)),
            static_cast<size_t>(array->strides(0)), type_of(*array)};
}

/// Passes progress on to Python, and signals to the interpreter, so that Ctrl-C stops the work.
class Watch {
public:
    Watch(py::object callback, atlas::Stage first)
        : callback_(std::move(callback)), first_(first) {}

    template <class Options>
    void attach(Options& options) {
        options.stage_progress = [](atlas::Stage stage, float fraction, void* user) {
            return static_cast<Watch*>(user)->report(stage, fraction) ? 0 : 1;
        };
        options.user = this;
    }
    /// Throws again what Python raised.
    void rethrow() {
        if (error_)
            throw py::error_already_set(std::move(*error_));
    }

private:
    using Clock = std::chrono::steady_clock;

    bool report(atlas::Stage stage, float fraction) {
        const double whole = atlas::ProgressMeter::whole(stage, double{fraction}, first_);
        const Clock::time_point now = Clock::now();
        if (now - last_ < std::chrono::milliseconds(20) && whole < 1.0 && called_)
            return true;
        last_ = now;
        called_ = true;
        const py::gil_scoped_acquire gil;
        try {
            if (PyErr_CheckSignals() != 0)
                throw py::error_already_set();
            if (!callback_.is_none())
                callback_(atlas::describe(stage), whole);
            return true;
        } catch (py::error_already_set& raised) {
            error_.emplace(std::move(raised));
            return false;
        }
    }

    py::object callback_;
    atlas::Stage first_;
    Clock::time_point last_;
    bool called_ = false;
    std::optional<py::error_already_set> error_;
};

/// Runs a call of the engine without the interpreter's lock.
template <class Call>
void run(Watch& watch, Call call) {
    atlas::Fault fault;
    {
        const py::gil_scoped_release released;
        fault = call();
    }
    watch.rethrow();
    if (fault.status != atlas::Status::ok)
        raise(fault);
}

/// A mesh as Python hands it over; it keeps the arrays alive.
struct Polygons {
    py::array positions, indices;
    std::optional<py::array> offsets, cuts, normals;
    bool normals_per_corner = false, weld = false;

    atlas::PolygonMesh view() const {
        atlas::PolygonMesh mesh;
        mesh.positions = ::view(positions);
        mesh.indices = ::view(indices);
        mesh.offsets = ::view(offsets);
        mesh.cuts = ::view(cuts);
        mesh.normals = ::view(normals);
        mesh.normals_per_corner = normals_per_corner;
        mesh.weld = weld;
        return mesh;
    }
};

using Atlas = atlas::PolygonAtlas;

std::unique_ptr<Atlas> create(const Polygons& polygons, float stretch, uint32_t max_charts,
                              uint32_t width, uint32_t height, float gutter, bool quality,
                              bool stack, bool cut_to_pack, uint32_t thread_count, int effort,
                              const py::object& progress) {
    const atlas::Fault bad = atlas::check_threads(thread_count);
    if (bad.status != atlas::Status::ok)
        raise(bad);
    const atlas::Threads threads(thread_count);
    atlas::Options options;
    options.max_stretch = stretch;
    options.max_charts = max_charts;
    options.width = width;
    options.height = height;
    options.gutter = gutter;
    options.quality = quality ? atlas::Quality::quality : atlas::Quality::fast;
    options.stack = stack;
    options.cut_to_pack = cut_to_pack;
    options.effort = effort;
    options.executor = threads.executor();
    Watch watch(progress, atlas::Stage::surface);
    watch.attach(options);
    auto made = std::make_unique<Atlas>();
    const atlas::PolygonMesh mesh = polygons.view();
    run(watch, [&] { return atlas::create(mesh, options, atlas::UvSpace::texture, *made); });
    return made;
}

std::unique_ptr<Atlas> pack(const Polygons& polygons, const py::array& uvs,
                            const std::optional<py::array>& charts,
                            const std::optional<py::array>& keep, uint32_t width, uint32_t height,
                            float gutter, uint32_t tiles, int turns, bool align, int density,
                            double texels_per_unit, int stack, int effort, bool quality,
                            const py::object& progress) {
    atlas::PackSettings settings;
    settings.width = width;
    settings.height = height;
    settings.gutter = gutter;
    settings.tiles = tiles;
    settings.turns = static_cast<atlas::Turns>(turns);
    settings.align = align;
    settings.density = static_cast<atlas::Density>(density);
    settings.texels_per_unit = texels_per_unit;
    settings.stack = static_cast<atlas::Stack>(stack);
    settings.effort = effort;
    settings.quality = quality ? atlas::Quality::quality : atlas::Quality::fast;
    Watch watch(progress, atlas::Stage::packing);
    watch.attach(settings);
    auto made = std::make_unique<Atlas>();
    const atlas::PolygonMesh mesh = polygons.view();
    const atlas::PolygonUvs input{view(uvs), view(charts), view(keep)};
    run(watch, [&] { return atlas::pack(mesh, input, settings, *made); });
    return made;
}

/// Copies the caller's arrays into a layout for measuring. Every corner has its own UV, equal ones
/// share one at a vertex.
atlas::Fault make_layout(const atlas::PolygonMesh& mesh, const atlas::PolygonUvs& uvs,
                         measure::Layout& layout) {
    atlas::MeshArrays arrays;
    atlas::UvArrays uv_arrays;
    atlas::Fault fault = atlas::read_mesh(mesh, arrays);
    if (fault.status == atlas::Status::ok)
        fault = atlas::read_uvs(uvs, arrays, uv_arrays);
    if (fault.status != atlas::Status::ok)
        return fault;
    layout.triangle_corners = atlas::make_triangles(arrays, mesh.weld).corner;
    layout.positions = std::move(arrays.positions);
    layout.unit = arrays.unit;
    layout.uvs = std::move(uv_arrays.uvs);
    layout.corner_uv.resize(arrays.corners.size());
    for (uint32_t c = 0; c < layout.corner_uv.size(); ++c)
        layout.corner_uv[c] = c;
    layout.corner_vertex = std::move(arrays.corners);
    layout.polygon_count = static_cast<uint32_t>(arrays.offsets.size() - 1);
    for (uint32_t p = 0; p < layout.polygon_count; ++p)
        layout.triangle_polygon.insert(layout.triangle_polygon.end(),
                                       arrays.offsets[p + 1] - arrays.offsets[p] - 2, p);
    return {};
}

struct Judged {
    measure::Measures measures;
    std::vector<measure::Breach> breaches;
};

py::dict figures(const Judged& judged) {
    const measure::Measures& m = judged.measures;
    py::dict d;
    d["polygons"] = m.polygons;
    d["triangles"] = m.triangles;
    d["charts"] = m.charts.size();
    d["stretch"] = m.worst_chart_stretch();
    d["angle_mean"] = m.distortion.angle_mean;
    d["coverage"] = m.coverage;
    d["seam_length"] = m.seam_length * m.unit;
    d["seam_relative"] = m.seam_relative;
    d["seam_edges"] = m.seam_edges;
    d["texels_per_unit"] = m.density.mean / m.unit;
    d["flipped"] = m.flipped.size();
    d["collapsed"] = m.collapsed.size();
    d["mirrored"] = m.mirrored.size();
    d["outside"] = m.outside.size();
    d["overlaps"] = m.overlaps.pairs_within + m.overlaps.pairs_between;
    d["gap"] = m.gap ? py::object(py::float_(m.gap->texels)) : py::object(py::none());
    py::list breaches;
    for (const measure::Breach& breach : judged.breaches)
        breaches.append(py::make_tuple(breach.name, breach.sentence, breach.polygons));
    d["breaches"] = breaches;
    return d;
}

py::dict measure_layout(const Polygons& polygons, const py::array& uvs, double width, double height,
                        double gutter, double stretch) {
    const atlas::PolygonMesh mesh = polygons.view();
    const atlas::PolygonUvs input{view(uvs), {}, {}};
    Judged judged;
    Watch none(py::none(), atlas::Stage::surface);
    run(none, [&] {
        measure::Layout layout;
        const atlas::Fault fault = make_layout(mesh, input, layout);
        if (fault.status != atlas::Status::ok)
            return fault;
        judged.measures = measure::measure(layout, {width, height});
        judged.breaches = measure::verify(layout, judged.measures, {gutter, stretch});
        return fault;
    });
    return figures(judged);
}

/// A view of an array that the atlas owns and that keeps the atlas alive.
template <class Value>
py::array list(const std::vector<Value> Atlas::*member, const py::object& self) {
    const std::vector<Value>& values = self.cast<const Atlas&>().*member;
    return py::array_t<Value>(static_cast<py::ssize_t>(values.size()), values.data(), self);
}

template <class Value>
py::array list(const std::vector<Value> atlas::Result::*member, const py::object& self,
               py::ssize_t columns = 0) {
    const std::vector<Value>& values = self.cast<const Atlas&>().triangles.*member;
    const auto count = static_cast<py::ssize_t>(values.size());
    if (columns == 0)
        return py::array_t<Value>(count, values.data(), self);
    return py::array_t<Value>({count / columns, columns}, values.data(), self);
}

} // namespace

// Table: the classes and functions that Python sees.
PYBIND11_MODULE(_engine, module) {
    using Result = atlas::Result;
    py::class_<Polygons>(module, "Polygons")
        .def(py::init([](py::array positions, py::array indices, std::optional<py::array> offsets,
                         std::optional<py::array> cuts, std::optional<py::array> normals,
                         bool normals_per_corner, bool weld) {
            return Polygons{std::move(positions),
                            std::move(indices),
                            std::move(offsets),
                            std::move(cuts),
                            std::move(normals),
                            normals_per_corner,
                            weld};
        }));
    py::class_<Atlas>(module, "Atlas")
        .def_property_readonly("uvs", [](py::object a) { return list(&Result::uvs, a, 2); })
        .def_property_readonly("vmapping",
                               [](py::object a) { return list(&Result::source_vertex, a); })
        .def_property_readonly("indices", [](py::object a) { return list(&Result::indices, a, 3); })
        .def_property_readonly("charts", [](py::object a) { return list(&Result::chart, a); })
        .def_property_readonly("over_limit",
                               [](py::object a) { return list(&Result::over_limit, a); })
        .def_property_readonly("lost", [](py::object a) { return list(&Result::lost, a); })
        .def_property_readonly("corner_vertices",
                               [](py::object a) { return list(&Atlas::corner_vertex, a); })
        .def_property_readonly("triangle_corners",
                               [](py::object a) { return list(&Atlas::triangle_corner, a); })
        .def_property_readonly("coverage", [](py::object a) { return list(&Atlas::coverage, a); })
        .def_property_readonly("chart_count",
                               [](const Atlas& a) { return a.triangles.chart_count; })
        .def_property_readonly("stretch", [](const Atlas& a) { return a.triangles.stretch; })
        .def_property_readonly("texels_per_unit", [](const Atlas& a) { return a.texels_per_unit; })
        .def_property_readonly("tiles", [](const Atlas& a) {
            std::vector<uint32_t> tiles;
            for (const atlas::PackedChart& chart : a.packed)
                tiles.push_back(chart.tile);
            return py::array_t<uint32_t>(static_cast<py::ssize_t>(tiles.size()), tiles.data());
        });
    module.def("create", &create);
    module.def("pack", &pack);
    module.def("measure", &measure_layout);
    module.attr("version") = TESSORA_VERSION;
}
