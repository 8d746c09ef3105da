/* Tessora's UV-atlas engine for C, and for every language that calls C.
 *
 * Takes a polygon mesh (closed, open, non-manifold, degenerate, disconnected) and unwraps it to a
 * texture: charts without flipped or overlapping triangles, under a stretch limit, packed with a
 * gutter that holds in the final texture. Deterministic: the same input gives the same bits on
 * every run and machine.
 *
 *     tessora_mesh mesh;
 *     tessora_mesh_init(&mesh, sizeof mesh);
 *     mesh.positions = (tessora_array){xyz, vertex_count, 0, TESSORA_FLOAT32};
 *     mesh.indices = (tessora_array){corners, corner_count, 0, TESSORA_UINT32};
 *     tessora_atlas* atlas;
 *     tessora_error error;
 *     if (tessora_create(&mesh, NULL, &atlas, &error) != TESSORA_OK)
 *         fprintf(stderr, "%s\n", error.text);
 *     ... tessora_atlas_uvs(atlas, NULL) ...
 *     tessora_atlas_free(atlas);
 *
 * Ownership: the caller's arrays are only read, and only during a call. An atlas owns its arrays;
 * they are valid until tessora_atlas_free(). Nothing else is allocated for the caller.
 * Threads: any number at once; an atlas may be read by several. No global state.
 * Failure: no call ends the process or throws. Every call that can fail returns a tessora_status
 * and, if `error` is not null, describes what happened there.
 * Growth: structs carry their size, so that later versions may append members. */
#ifndef TESSORA_ATLAS_H
#define TESSORA_ATLAS_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32) && !defined(TESSORA_STATIC)
#ifdef TESSORA_BUILDING
#define TESSORA_API __declspec(dllexport)
#else
#define TESSORA_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define TESSORA_API __attribute__((visibility("default")))
#else
#define TESSORA_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Changes when a program must be compiled again. */
#define TESSORA_ABI_VERSION 1

/* Stands for "none": no neighbour across an edge, no element. */
#define TESSORA_NONE 0xFFFFFFFFu

typedef enum tessora_status {
    TESSORA_OK = 0,
    TESSORA_INVALID_ARGUMENT = 1,       /* an array or an option; the text names it */
    TESSORA_INDEX_OUT_OF_RANGE = 2,     /* element: position in `indices` */
    TESSORA_NEIGHBOUR_OUT_OF_RANGE = 3, /* element: position in `neighbours` */
    TESSORA_NOT_FINITE = 4,             /* element: position in the array that the text names */
    TESSORA_DOES_NOT_FIT = 5, /* no room for charts and gutter; element: number of charts */
    TESSORA_CHART_LIMIT = 6,  /* more charts than max_charts needed; element: the number */
    TESSORA_CANCELLED = 7,    /* by the progress function */
    TESSORA_OUT_OF_MEMORY = 8,
    TESSORA_KEPT_CHARTS_COLLIDE = 9, /* closer than the gutter; element: a polygon of the later */
    TESSORA_KEPT_CHART_OUTSIDE = 10  /* of every tile; element: a polygon of it */
} tessora_status;

typedef enum tessora_type {
    TESSORA_NO_TYPE = 0,
    TESSORA_FLOAT32 = 1,
    TESSORA_FLOAT64 = 2,
    TESSORA_UINT8 = 3,
    TESSORA_UINT16 = 4,
    TESSORA_UINT32 = 5
} tessora_type;

typedef enum tessora_quality { TESSORA_FAST = 0, TESSORA_QUALITY = 1 } tessora_quality;

/* A read-only array of the caller's. */
typedef struct tessora_array {
    const void* data;
    size_t count;  /* elements; 0 = the array is not given */
    size_t stride; /* bytes from one element to the next; 0 = without gaps */
    int32_t type;  /* a tessora_type */
} tessora_array;

/* Corner c is at vertex indices[c]; edge c runs from corner c to the next corner of its polygon.
 * A vertex may be named twice by a polygon, a polygon may have no area: such polygons cost the
 * others nothing. */
typedef struct tessora_mesh {
    size_t struct_size;
    /* 3 float32 or float64 per vertex, any unit. float64 positions are centred if the mesh is far
     * from the origin for its size, and divided by a power of ten, before they are rounded to
     * single precision. */
    tessora_array positions;
    /* A uint16 or uint32 per corner: its vertex. */
    tessora_array indices;
    /* Polygon p has the corners offsets[p] .. offsets[p+1]-1, three or more, in winding order:
     * polygons + 1 uint32, the first 0, the last the number of corners. Not given: triangles. */
    tessora_array offsets;
    /* A uint8 per corner: edge c becomes a seam if not 0, on either side. Optional. */
    tessora_array cuts;
    /* 3 float32 or float64 per vertex, or per corner if `normals_per_corner`: an edge becomes a
     * seam where they differ by more than one degree between its two sides. Optional. */
    tessora_array normals;
    /* Triangles only: a uint32 per corner, the triangle across edge c or TESSORA_NONE. Not given:
     * found as by tessora_neighbours(). */
    tessora_array neighbours;
    /* Triangles only: a uint8 per corner, not 0 where edge c is a diagonal inside one polygon,
     * which must not become a seam. Optional. */
    tessora_array false_edges;
    int32_t normals_per_corner;
    /* Not 0: vertices at equal positions count as one for the neighbours, as a mesh needs whose
     * vertices are split at normals or old texture coordinates. */
    int32_t weld;
} tessora_mesh;

/* Called with what is being done, in a few English words, and the fraction of the whole work that
 * is done, never decreasing; at least every half second, on the calling thread. Returning a value
 * other than 0 cancels the call. */
typedef int (*tessora_progress)(const char* stage, float fraction, void* user);

/* Runs function(i, user) once for each i in [0, count), in any order and on any threads, and
 * returns when all are done. The calling thread takes part, so that calls from within `function`
 * finish too. Results do not depend on it. */
typedef void (*tessora_parallel_for)(size_t count, void (*function)(size_t i, void* user),
                                     void* user);

typedef struct tessora_options {
    size_t struct_size;
    float max_stretch;   /* 0 = isometric only, 1 = any; default 0.15 */
    uint32_t max_charts; /* more charts than this are an error; default 0 = no limit */
    uint32_t width;      /* of the texture, texels; default 512 */
    uint32_t height;     /* default 512 */
    float gutter;        /* least distance of two charts, texels; default 2 */
    int32_t quality;     /* a tessora_quality; default TESSORA_FAST, as the plug-in's */
    int32_t stack;       /* copies of a sheet share its place; default 0 */
    int32_t cut_to_pack; /* cut charts in two where that lets all charts grow, however few there are
                          * and in fast mode too; see Options in atlas/atlas.h; default 0 */
    int32_t texture_uvs; /* coordinates of the final texture, the bits that the plug-in writes;
                          * 0 = isotropic, in units of the longer texture side; default 1 */
    tessora_progress progress;         /* default null */
    void* user;                        /* handed to `progress` */
    tessora_parallel_for parallel_for; /* default null: `threads` says what is used */
    uint32_t threads; /* of this library, the calling one included; 0 = one a processor; default 1.
                       * WebAssembly has one */
    int32_t effort;   /* for the layout, 0 to 10; each step from 4 on about doubles the time; in
                       * quality mode more effort also makes other cuts; default 4 */
} tessora_options;

typedef struct tessora_error {
    int32_t code;     /* a tessora_status */
    uint32_t element; /* as for the status, or TESSORA_NONE */
    char text[248];   /* one English sentence without a full stop; "" if the call succeeded */
} tessora_error;

/* The result of a call; opaque. */
typedef struct tessora_atlas tessora_atlas;

/* TESSORA_ABI_VERSION and the version of the library at run time, "2.11". */
TESSORA_API uint32_t tessora_abi_version(void);
TESSORA_API const char* tessora_version(void);

/* Set the defaults; `size` is that of the caller's struct. */
TESSORA_API void tessora_mesh_init(tessora_mesh* mesh, size_t size);
TESSORA_API void tessora_options_init(tessora_options* options, size_t size);

/* Partitions into charts, flattens them and packs them. `options` may be null for the defaults.
 * On success *atlas is to be freed; on failure it is null. */
TESSORA_API int tessora_create(const tessora_mesh* mesh, const tessora_options* options,
                               tessora_atlas** atlas, tessora_error* error);

/* Partitions and flattens only: every chart has its own coordinates, at the scale at which the
 * whole mesh has area 1. width, height, gutter and texture_uvs are ignored. */
TESSORA_API int tessora_partition(const tessora_mesh* mesh, const tessora_options* options,
                                  tessora_atlas** atlas, tessora_error* error);

/* Texture coordinates that exist, whoever made them. */
typedef struct tessora_uvs {
    size_t struct_size;
    /* 2 float32 or float64 per corner, of the texture. Corners at one vertex (one place, if the
     * mesh is welded) with equal coordinates are connected. */
    tessora_array uvs;
    /* A uint32 per polygon, any numbers; equal ones are one chart. Not given: polygons with a
     * connected corner are one chart. */
    tessora_array charts;
    /* A uint8 per polygon: if not 0, its chart stays where it is and the others are packed around
     * it. Optional. */
    tessora_array keep;
} tessora_uvs;

typedef enum tessora_turns { /* of a chart */
                             TESSORA_TURN_ANY = 0,
                             TESSORA_TURN_QUARTER = 1,
                             TESSORA_TURN_NONE = 2
} tessora_turns;

typedef enum tessora_density { /* texels per unit of length on the surface */
                               TESSORA_DENSITY_AS_IS =
                                   0, /* charts keep their sizes relative to each other */
                               TESSORA_DENSITY_UNIFORM = 1, /* the same for every chart */
                               TESSORA_DENSITY_FIXED =
                                   2 /* `texels_per_unit`; what does not fit is an error */
} tessora_density;

typedef enum tessora_stack { /* charts of one shape share a place */
                             TESSORA_STACK_NONE = 0,
                             TESSORA_STACK_CONGRUENT = 1, /* after a turn and a shift */
                             TESSORA_STACK_MIRRORED = 2   /* also after turning them over */
} tessora_stack;

typedef struct tessora_pack_options {
    size_t struct_size;
    uint32_t width;  /* of one tile, texels; default 512 */
    uint32_t height; /* default 512 */
    float gutter;    /* least distance of two charts, texels; default 2 */
    uint32_t tiles;  /* 1 to 100 textures; tile i is moved by (i % 10, i / 10); default 1 */
    int32_t turns;   /* a tessora_turns; default any */
    int32_t align;   /* turn charts so that their straight borders follow the axes; default 0 */
    int32_t density; /* a tessora_density; default as is */
    int32_t stack;   /* a tessora_stack; default none */
    int32_t effort;  /* 0 to 10; every step doubles the time for the search; default 4 */
    int32_t quality; /* a tessora_quality; default TESSORA_QUALITY */
    double texels_per_unit;    /* for a fixed density, in the unit of the positions */
    tessora_progress progress; /* as in tessora_options */
    void* user;
    tessora_parallel_for parallel_for; /* default null: all work is done on the calling thread */
} tessora_pack_options;

TESSORA_API void tessora_uvs_init(tessora_uvs* uvs, size_t size);
TESSORA_API void tessora_pack_options_init(tessora_pack_options* options, size_t size);

/* Packs charts that exist into one texture or several, without touching their shape. Coordinates
 * of the result are those of the final texture. */
TESSORA_API int tessora_pack(const tessora_mesh* mesh, const tessora_uvs* uvs,
                             const tessora_pack_options* options, tessora_atlas** atlas,
                             tessora_error* error);

TESSORA_API void tessora_atlas_free(tessora_atlas* atlas); /* null is allowed */

TESSORA_API uint32_t tessora_atlas_chart_count(const tessora_atlas* atlas);
/* The stretch reached: the maximum over the charts of 1 - 1/L2. */
TESSORA_API float tessora_atlas_stretch(const tessora_atlas* atlas);

/* The arrays of an atlas. If `count` is not null it receives the number of elements; an empty
 * array may be null. Triangles are those of tessora_triangulate(). */

/* 2 floats per new vertex. The count is the number of new vertices. */
TESSORA_API const float* tessora_atlas_uvs(const tessora_atlas* atlas, size_t* count);
/* Per new vertex: the caller's vertex that it is a copy of. */
TESSORA_API const uint32_t* tessora_atlas_source_vertices(const tessora_atlas* atlas,
                                                          size_t* count);
/* Per corner of the caller's: its new vertex. */
TESSORA_API const uint32_t* tessora_atlas_corner_vertices(const tessora_atlas* atlas,
                                                          size_t* count);
/* 3 per triangle: its new vertices. The count is that of entries. */
TESSORA_API const uint32_t* tessora_atlas_indices(const tessora_atlas* atlas, size_t* count);
/* 3 per triangle: the caller's corners. The count is that of entries. */
TESSORA_API const uint32_t* tessora_atlas_triangle_corners(const tessora_atlas* atlas,
                                                           size_t* count);
/* Per triangle: its chart, less than tessora_atlas_chart_count(). */
TESSORA_API const uint32_t* tessora_atlas_charts(const tessora_atlas* atlas, size_t* count);
/* Triangles of charts that exceed the stretch limit, ascending: each is a single polygon that
 * cannot be flattened with less stretch. */
TESSORA_API const uint32_t* tessora_atlas_over_limit(const tessora_atlas* atlas, size_t* count);
/* Triangles that rounding to single precision collapsed or flipped, ascending; normally none. */
TESSORA_API const uint32_t* tessora_atlas_lost(const tessora_atlas* atlas, size_t* count);
/* 3 per triangle: the triangle across the edge, TESSORA_NONE at every chart border. Empty unless
 * made by tessora_partition(). The count is that of entries. */
TESSORA_API const uint32_t* tessora_atlas_neighbours(const tessora_atlas* atlas, size_t* count);

/* Made by tessora_pack(), else empty or 0. Per tile: the area of its charts over its own. */
TESSORA_API const double* tessora_atlas_coverage(const tessora_atlas* atlas, size_t* count);
/* The mean density of the packed charts. */
TESSORA_API double tessora_atlas_texels_per_unit(const tessora_atlas* atlas);
/* Of one chart: its tile, and the chart in whose place it lies, or TESSORA_NONE. */
TESSORA_API uint32_t tessora_atlas_chart_tile(const tessora_atlas* atlas, uint32_t chart);
TESSORA_API uint32_t tessora_atlas_chart_stacked_on(const tessora_atlas* atlas, uint32_t chart);

/* The triangles of the polygons, in order; a polygon of n corners gives n - 2.
 * Shape: triangle_corners[count], count = 3 * (corners - 2 * polygons): the caller's corners. */
TESSORA_API int tessora_triangulate(const tessora_mesh* mesh, uint32_t* triangle_corners,
                                    size_t count, tessora_error* error);

/* For every edge of those triangles the triangle across it; TESSORA_NONE on a border, at a cut and
 * where normals differ. Two triangles at an edge are neighbours whichever way round they are wound;
 * of more they are paired by sheet (docs/atlas.md).
 * Shape: neighbours[count], count = 3 * (corners - 2 * polygons); entry 3t+k belongs to the edge
 * from corner k to corner (k+1)%3 of triangle t. */
TESSORA_API int tessora_neighbours(const tessora_mesh* mesh, uint32_t* neighbours, size_t count,
                                   tessora_error* error);

/* Brings isotropic coordinates into the unit square of the final texture: the shorter side is
 * stretched to it, and a margin of half a gutter is left; single precision.
 * Shape: uvs[2*count], changed in place. */
TESSORA_API int tessora_to_texture(float* uvs, size_t count, uint32_t width, uint32_t height,
                                   float gutter, tessora_error* error);

#ifdef __cplusplus
}
#endif

#endif
