/// The UV-atlas calls, implemented by the engine. Meshes are read and created only through the
/// published interfaces, so this file works with any implementation of them.

#include "atlas/atlas.h"
#include "platform/d3dx9/host_hooks.h"
#include "platform/d3dx9/object.h"
#include "platform/d3dx9/reason.h"

#include <d3dx9.h>

#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace d3dx9 {

namespace {

namespace atlas = tessora::atlas;

/// With at least this many faces D3DXUVATLAS_DEFAULT means fast.
constexpr DWORD k_default_quality_faces = 25000;

/// Tolerance for single-precision fractions: a step counts as reached this fraction early.
constexpr float k_step_slack = 1e-4f;

/// A COM pointer that releases its reference.
template <class T>
class Owned {
public:
    Owned() = default;
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() {
        if (pointer_ != nullptr)
            pointer_->Release();
    }

    T** slot() { return &pointer_; }
    T* operator->() const { return pointer_; }
    T* get() const { return pointer_; }

    /// Moves the reference to `*slot`; keeps it, to be released, if `slot` is null.
    void give(T** slot) {
        if (slot != nullptr) {
            *slot = pointer_;
            pointer_ = nullptr;
        }
    }

private:
    T* pointer_ = nullptr;
};

/// The arguments that both calls have.
struct Call {
    ID3DXMesh* mesh;
    DWORD texture_index;
    const DWORD* adjacency;
    const DWORD* false_edges;
    const FLOAT* imt_array;
    DWORD options;
};

struct Outputs {
    ID3DXMesh** mesh;
    ID3DXBuffer** face_partitioning;
    ID3DXBuffer** vertex_remap;
    ID3DXBuffer** partition_adjacency;
    FLOAT* max_stretch;
    UINT* num_charts;
};

void clear(const Outputs& outputs) {
    if (outputs.mesh != nullptr)
        *outputs.mesh = nullptr;
    for (ID3DXBuffer** const slot :
         {outputs.face_partitioning, outputs.vertex_remap, outputs.partition_adjacency})
        if (slot != nullptr)
            *slot = nullptr;
    if (outputs.max_stretch != nullptr)
        *outputs.max_stretch = 0.0f;
    if (outputs.num_charts != nullptr)
        *outputs.num_charts = 0;
}

/// Passes the engine's progress on: tenths of the work to the caller, reduced to its frequency, and
/// every stage to the application's hook.
struct Progress {
    LPD3DXUVATLASCB callback;
    FLOAT frequency;
    LPVOID context;
    StageHook stage_hook = find_stage_hook();
    float next = 0.0f;
    HRESULT answer = S_OK;

    static int report(float fraction, void* user) {
        auto* const self = static_cast<Progress*>(user);
        if (fraction < self->next && fraction < 1.0f)
            return 0;
        self->next = fraction + self->frequency * (1.0f - k_step_slack);
        self->answer = self->callback(fraction, self->context);
        return self->answer == S_OK ? 0 : 1;
    }
    static int report_stage(atlas::Stage stage, float fraction, void* user) {
        return static_cast<Progress*>(user)->stage_hook(atlas::describe(stage), fraction);
    }
};

/// Offsets of position and texture coordinate in a vertex.
struct VertexFormat {
    std::vector<D3DVERTEXELEMENT9> declaration;
    DWORD stride = 0;
    WORD position = 0;
    WORD texcoord = 0;
};

bool read_format(ID3DXMesh* mesh, DWORD texture_index, VertexFormat& format) {
    format.declaration.resize(MAX_FVF_DECL_SIZE);
    if (FAILED(mesh->GetDeclaration(format.declaration.data())))
        return false;
    format.stride = mesh->GetNumBytesPerVertex();
    bool has_position = false;
    bool has_texcoord = false;
    for (const D3DVERTEXELEMENT9& element : format.declaration) {
        if (element.Stream == 0xFF)
            break;
        if (element.Usage == D3DDECLUSAGE_POSITION && element.UsageIndex == 0 &&
            element.Type == D3DDECLTYPE_FLOAT3) {
            format.position = element.Offset;
            has_position = true;
        }
        if (element.Usage == D3DDECLUSAGE_TEXCOORD && element.UsageIndex == texture_index &&
            element.Type == D3DDECLTYPE_FLOAT2) {
            format.texcoord = element.Offset;
            has_texcoord = true;
        }
    }
    return has_position && has_texcoord;
}

/// The input converted for the engine, and a copy of the mesh's vertex buffer.
struct Input {
    std::vector<unsigned char> vertices;
    std::vector<float> positions;
    std::vector<uint32_t> indices;
};

HRESULT read_vertices(ID3DXMesh* mesh, const VertexFormat& format, Input& input) {
    const size_t count = mesh->GetNumVertices();
    input.vertices.resize(count * format.stride);
    input.positions.resize(count * 3);
    void* data = nullptr;
    const HRESULT result = mesh->LockVertexBuffer(D3DLOCK_READONLY, &data);
    if (FAILED(result))
        return fail(result, "the mesh's vertices could not be read");
    std::memcpy(input.vertices.data(), data, input.vertices.size());
    mesh->UnlockVertexBuffer();
    for (size_t i = 0; i < count; ++i)
        std::memcpy(&input.positions[i * 3], &input.vertices[i * format.stride + format.position],
                    3 * sizeof(float));
    return D3D_OK;
}

HRESULT read_indices(ID3DXMesh* mesh, Input& input) {
    const size_t count = size_t{mesh->GetNumFaces()} * 3;
    input.indices.resize(count);
    void* data = nullptr;
    const HRESULT result = mesh->LockIndexBuffer(D3DLOCK_READONLY, &data);
    if (FAILED(result))
        return fail(result, "the mesh's indices could not be read");
    if ((mesh->GetOptions() & D3DXMESH_32BIT) != 0) {
        std::memcpy(input.indices.data(), data, count * sizeof(uint32_t));
    } else {
        const auto* const narrow = static_cast<const uint16_t*>(data);
        input.indices.assign(narrow, narrow + count);
    }
    mesh->UnlockIndexBuffer();
    return D3D_OK;
}

/// DWORD and uint32_t have the same size, but on some systems they are different types.
atlas::Span<uint32_t> words(const DWORD* data, size_t size) {
    static_assert(sizeof(DWORD) == sizeof(uint32_t));
    return {reinterpret_cast<const uint32_t*>(data), data == nullptr ? 0 : size};
}

atlas::Quality quality_of(DWORD options, size_t faces) {
    if (options == D3DXUVATLAS_GEODESIC_FAST)
        return atlas::Quality::fast;
    if (options == D3DXUVATLAS_DEFAULT && faces >= k_default_quality_faces)
        return atlas::Quality::fast;
    return atlas::Quality::quality;
}

/// Records the engine's description of a failure and returns the matching HRESULT.
HRESULT explain(const atlas::Failure& failure, const Progress& progress, UINT* num_charts) {
    const char* const why = atlas::describe(failure.status);
    const unsigned element = failure.element;
    switch (failure.status) {
    case atlas::Status::ok:
        return D3D_OK;
    case atlas::Status::index_out_of_range:
        return fail(D3DXERR_INVALIDDATA, "%s (corner %u)", why, element);
    case atlas::Status::adjacency_out_of_range:
        return fail(D3DERR_INVALIDCALL, "%s (triangle edge %u)", why, element);
    case atlas::Status::non_finite_position:
        return fail(D3DXERR_INVALIDDATA, "%s (vertex %u)", why, element);
    case atlas::Status::does_not_fit:
        return fail(D3DERR_MOREDATA, "%s (%u charts)", why, element);
    case atlas::Status::chart_limit:
        if (num_charts != nullptr)
            *num_charts = element;
        return fail(E_FAIL, "%s (%u charts)", why, element);
    case atlas::Status::aborted:
        return fail(FAILED(progress.answer) ? progress.answer : E_ABORT, "%s", why);
    case atlas::Status::out_of_memory:
        return fail(E_OUTOFMEMORY, "%s", why);
    default:
        return fail(D3DERR_INVALIDCALL, "%s", why);
    }
}

HRESULT check(const Call& call) {
    if (call.mesh == nullptr)
        return fail(D3DERR_INVALIDCALL, "there is no mesh");
    if (call.adjacency == nullptr)
        return fail(D3DERR_INVALIDCALL, "there is no adjacency");
    if (call.imt_array != nullptr)
        return fail(E_NOTIMPL, "integrated metric tensors are not supported");
    if (call.options > D3DXUVATLAS_GEODESIC_QUALITY)
        return fail(D3DERR_INVALIDCALL, "unknown options 0x%X",
                    static_cast<unsigned>(call.options));
    return D3D_OK;
}

HRESULT write_vertices(ID3DXMesh* mesh, const VertexFormat& format, const Input& input,
                       const atlas::Result& result) {
    void* data = nullptr;
    const HRESULT locked = mesh->LockVertexBuffer(0, &data);
    if (FAILED(locked))
        return fail(locked, "the new mesh's vertices could not be written");
    auto* vertex = static_cast<unsigned char*>(data);
    for (size_t i = 0; i < result.source_vertex.size(); ++i, vertex += format.stride) {
        const size_t source = size_t{result.source_vertex[i]} * format.stride;
        std::memcpy(vertex, &input.vertices[source], format.stride);
        std::memcpy(vertex + format.texcoord, &result.uvs[i * 2], 2 * sizeof(float));
    }
    mesh->UnlockVertexBuffer();
    return D3D_OK;
}

HRESULT write_indices(ID3DXMesh* mesh, const atlas::Result& result) {
    void* data = nullptr;
    const HRESULT locked = mesh->LockIndexBuffer(0, &data);
    if (FAILED(locked))
        return fail(locked, "the new mesh's indices could not be written");
    std::memcpy(data, result.indices.data(), result.indices.size() * sizeof(uint32_t));
    mesh->UnlockIndexBuffer();
    return D3D_OK;
}

/// Creates the new mesh with the device, options and declaration of the input. Its indices are
/// always 32-bit, because chart borders add vertices.
HRESULT make_mesh(ID3DXMesh* source, const VertexFormat& format, const Input& input,
                  const atlas::Result& result, Owned<ID3DXMesh>& mesh) {
    Owned<IDirect3DDevice9> device;
    HRESULT made = source->GetDevice(device.slot());
    if (SUCCEEDED(made))
        made =
            D3DXCreateMesh(source->GetNumFaces(), static_cast<DWORD>(result.source_vertex.size()),
                           source->GetOptions() | D3DXMESH_32BIT, format.declaration.data(),
                           device.get(), mesh.slot());
    if (FAILED(made))
        return fail(made, "the new mesh could not be made");
    made = write_vertices(mesh.get(), format, input, result);
    return FAILED(made) ? made : write_indices(mesh.get(), result);
}

HRESULT fill_buffer(const std::vector<uint32_t>& values, Owned<ID3DXBuffer>& buffer) {
    const size_t bytes = values.size() * sizeof(uint32_t);
    if (bytes > std::numeric_limits<DWORD>::max())
        return E_OUTOFMEMORY;
    const HRESULT made = D3DXCreateBuffer(static_cast<DWORD>(bytes), buffer.slot());
    if (SUCCEEDED(made) && bytes != 0)
        std::memcpy(buffer->GetBufferPointer(), values.data(), bytes);
    return made;
}

// The atlas stage never releases this buffer, on purpose.
D3DX9_NAMED_ALLOCATION HRESULT allocate_remap_buffer(const std::vector<uint32_t>& values,
                                                     Owned<ID3DXBuffer>& buffer) {
    const HRESULT made = fill_buffer(values, buffer);
    keep_frame();
    return made;
}

HRESULT publish(const Call& call, const VertexFormat& format, const Input& input,
                const atlas::Result& result, const std::vector<uint32_t>& partition_adjacency,
                const Outputs& outputs) {
    Owned<ID3DXMesh> mesh;
    Owned<ID3DXBuffer> faces;
    Owned<ID3DXBuffer> remap;
    Owned<ID3DXBuffer> opened;
    HRESULT made = D3D_OK;
    if (outputs.mesh != nullptr)
        made = make_mesh(call.mesh, format, input, result, mesh);
    if (FAILED(made))
        return made;
    if (outputs.face_partitioning != nullptr)
        made = fill_buffer(result.chart, faces);
    if (SUCCEEDED(made) && outputs.vertex_remap != nullptr)
        made = allocate_remap_buffer(result.source_vertex, remap);
    if (SUCCEEDED(made) && outputs.partition_adjacency != nullptr)
        made = fill_buffer(partition_adjacency, opened);
    if (FAILED(made))
        return fail(made, "an output buffer could not be made");
    mesh.give(outputs.mesh);
    faces.give(outputs.face_partitioning);
    remap.give(outputs.vertex_remap);
    opened.give(outputs.partition_adjacency);
    if (outputs.max_stretch != nullptr)
        *outputs.max_stretch = result.stretch;
    if (outputs.num_charts != nullptr)
        *outputs.num_charts = result.chart_count;
    return D3D_OK;
}

enum class Extent { partition_and_pack, partition };

int wanted_effort() {
    const EffortHook hook = find_effort_hook();
    return hook != nullptr ? hook() : atlas::k_usual_effort;
}

HRESULT unwrap(const Call& call, Extent extent, atlas::Options options, Progress& progress,
               const Outputs& outputs) {
    VertexFormat format;
    if (!read_format(call.mesh, call.texture_index, format))
        return fail(
            D3DERR_INVALIDCALL,
            "the mesh's vertices have no float3 position or no float2 texture coordinate %u",
            static_cast<unsigned>(call.texture_index));
    Input input;
    HRESULT read = read_vertices(call.mesh, format, input);
    if (SUCCEEDED(read))
        read = read_indices(call.mesh, input);
    if (FAILED(read))
        return read;

    atlas::Mesh mesh;
    mesh.positions = {input.positions.data(), input.positions.size()};
    mesh.indices = {input.indices.data(), input.indices.size()};
    mesh.adjacency = words(call.adjacency, input.indices.size());
    mesh.false_edges = words(call.false_edges, input.indices.size());
    options.quality = quality_of(call.options, input.indices.size() / 3);
    if (progress.callback != nullptr)
        options.progress = Progress::report;
    if (progress.stage_hook != nullptr)
        options.stage_progress = Progress::report_stage;
    options.user = &progress;
    options.executor = find_parallel_hook();
    options.effort = wanted_effort();
    atlas::Result result;
    std::vector<uint32_t> partition_adjacency;
    const atlas::Failure failure =
        extent == Extent::partition ? atlas::partition(mesh, options, result, partition_adjacency)
                                    : atlas::create(mesh, options, result);
    if (failure.status != atlas::Status::ok)
        return explain(failure, progress, outputs.num_charts);
    const HRESULT published = publish(call, format, input, result, partition_adjacency, outputs);
    if (SUCCEEDED(published))
        record_over_limit(std::move(result.over_limit));
    return published;
}

HRESULT guarded_unwrap(const Call& call, Extent extent, const atlas::Options& options,
                       Progress progress, const Outputs& outputs) {
    const HRESULT checked = check(call);
    if (FAILED(checked))
        return checked;
    try {
        return unwrap(call, extent, options, progress, outputs);
    } catch (const std::bad_alloc&) {
        return fail(E_OUTOFMEMORY, "memory ran out");
    }
}

/// Clears outputs and record, then passes the fault point of the whole call.
HRESULT enter(const char* point, const Outputs& outputs) {
    clear_reason();
    clear(outputs);
    const int code = faultpoint::hit(point);
    return code == 0 ? D3D_OK : fail(code, "%s was told to fail", point);
}

} // namespace

} // namespace d3dx9

HRESULT WINAPI D3DXUVAtlasCreate(LPD3DXMESH mesh, UINT max_charts, FLOAT max_stretch, UINT width,
                                 UINT height, FLOAT gutter, DWORD texture_index,
                                 CONST DWORD* adjacency, CONST DWORD* false_edges,
                                 CONST FLOAT* imt_array, LPD3DXUVATLASCB callback,
                                 FLOAT callback_frequency, LPVOID user_context, DWORD options,
                                 LPD3DXMESH* mesh_out, LPD3DXBUFFER* face_partitioning,
                                 LPD3DXBUFFER* vertex_remap, FLOAT* max_stretch_out,
                                 UINT* num_charts) {
    using namespace d3dx9;
    const Outputs outputs{mesh_out, face_partitioning, vertex_remap,
                          nullptr,  max_stretch_out,   num_charts};
    const HRESULT entered = enter("D3DXUVAtlasCreate", outputs);
    if (FAILED(entered))
        return entered;
    atlas::Options wanted;
    wanted.max_stretch = max_stretch;
    wanted.max_charts = max_charts;
    wanted.width = width;
    wanted.height = height;
    wanted.gutter = gutter;
    return guarded_unwrap({mesh, texture_index, adjacency, false_edges, imt_array, options},
                          Extent::partition_and_pack, wanted,
                          Progress{callback, callback_frequency, user_context}, outputs);
}

HRESULT WINAPI D3DXUVAtlasPartition(LPD3DXMESH mesh, UINT max_charts, FLOAT max_stretch,
                                    DWORD texture_index, CONST DWORD* adjacency,
                                    CONST DWORD* false_edges, CONST FLOAT* imt_array,
                                    LPD3DXUVATLASCB callback, FLOAT callback_frequency,
                                    LPVOID user_context, DWORD options, LPD3DXMESH* mesh_out,
                                    LPD3DXBUFFER* face_partitioning, LPD3DXBUFFER* vertex_remap,
                                    LPD3DXBUFFER* partition_adjacency, FLOAT* max_stretch_out,
                                    UINT* num_charts) {
    using namespace d3dx9;
    const Outputs outputs{mesh_out,        face_partitioning, vertex_remap, partition_adjacency,
                          max_stretch_out, num_charts};
    const HRESULT entered = enter("D3DXUVAtlasPartition", outputs);
    if (FAILED(entered))
        return entered;
    atlas::Options wanted;
    wanted.max_stretch = max_stretch;
    wanted.max_charts = max_charts;
    return guarded_unwrap({mesh, texture_index, adjacency, false_edges, imt_array, options},
                          Extent::partition, wanted,
                          Progress{callback, callback_frequency, user_context}, outputs);
}
