#include "app/report.h"

#include "app/command.h"
#include "app/request_json.h"

#include <cmath>
#include <nlohmann/json.hpp>

namespace app {
namespace {

using Json = nlohmann::ordered_json;

double rounded(double value, double unit) { return std::round(value * unit) / unit; }

Json seconds_json(const StageSeconds& s) {
    Json out = Json::object();
    double total = 0.0;
    const auto put = [&](const char* name, const std::optional<double>& value) {
        if (value) {
            out[name] = rounded(*value, 1e6);
            total += *value;
        }
    };
    put("read", s.read);
    put("collect", s.collect);
    put("generate", s.generate);
    put("apply", s.apply);
    put("verify", s.verify);
    put("write", s.write);
    out["total"] = rounded(total, 1e6);
    return out;
}

void put_figures(const UnwrapReport& report, Json& out) {
    if (report.mesh) {
        out["polygons"] = report.mesh->polygons;
        out["triangles"] = report.mesh->triangles;
        out["vertices"] = report.mesh->vertices;
    }
    if (report.result) {
        out["charts"] = report.result->charts;
        out["stretch"] = report.result->stretch;
        out["over_limit"] = report.result->over_limit;
        out["existing_seam_edges"] = report.result->existing_seam_edges;
        out["new_seam_edges"] = report.result->new_seam_edges;
    }
    if (!report.measures.empty())
        out["measures"] = Json::parse(report.measures);
}

/// Fingerprints of the files that were reached.
void put_hashes(const UnwrapReport& report, Json& out) {
    if (!report.input_hash.empty())
        out["hashes"]["input"] = report.input_hash;
    for (const auto& [path, hash] : report.other_hashes)
        out["hashes"]["files"][path] = hash;
    if (report.code == 0 && !report.output_hash.empty())
        out["hashes"]["output"] = report.output_hash;
}

} // namespace

std::string to_json(const UnwrapReport& report) {
    Json out;
    out["schema"] = 1;
    out["program"] = std::string("tessora ") + version();
    out["status"] = report.code == 0 ? "ok" : "failed";
    out["code"] = report.code;
    if (!report.reason.empty())
        out["reason"] = report.reason;
    out["input"] = report.input;
    if (report.code == 0) {
        out["output"] = report.output;
        if (!report.layout.empty())
            out["layout"] = report.layout;
        if (!report.view.empty())
            out["view"] = report.view;
    }
    put_hashes(report, out);
    put_figures(report, out);
    for (const MeshReport& mesh : report.meshes) {
        Json one = {{"name", mesh.name}};
        put_figures(mesh.report, one);
        one["width"] = mesh.report.settings.width;
        one["height"] = mesh.report.settings.height;
        out["meshes"].push_back(std::move(one));
    }
    out["settings"] = settings_to_json(report.settings);
    out["seconds"] = seconds_json(report.seconds);
    out["peak_mb"] = rounded(report.peak_mb, 10.0);
    out["warnings"] = report.warnings;
    return out.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

} // namespace app
