/// Preloaded into the window (LD_PRELOAD): what the OpenGL driver would draw is dropped, and
/// frames, draws and uploads are counted, so that what remains is the program's own work.
///
/// The counters are five 64-bit numbers in the file that TESSORA_COUNTS names: frames, processor
/// nanoseconds of all threads at the last frame, draws, vertices, bytes handed to the driver.
#include <GL/gl.h>
#include <GL/glext.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

struct GLFWwindow;

namespace {

struct Counts {
    uint64_t frames, nanoseconds, draws, vertices, bytes;
};

Counts* open_counts() {
    static Counts unused;
    const char* name = std::getenv("TESSORA_COUNTS");
    const int file = name ? ::open(name, O_RDWR | O_CREAT, 0600) : -1;
    if (file < 0 || ::ftruncate(file, sizeof(Counts)) != 0)
        return &unused;
    void* memory = ::mmap(nullptr, sizeof(Counts), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    return memory == MAP_FAILED ? &unused : static_cast<Counts*>(memory);
}

Counts& counts() {
    static Counts* const opened = open_counts();
    return *opened;
}

template <class Function>
Function driver(Function, const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

void note_draw(GLsizei vertices) {
    ++counts().draws;
    counts().vertices += static_cast<uint64_t>(vertices);
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) void glfwSwapBuffers(GLFWwindow*) {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    counts().nanoseconds =
        static_cast<uint64_t>(now.tv_sec) * 1000000000u + static_cast<uint64_t>(now.tv_nsec);
    ++counts().frames;
}

void glDrawArrays(GLenum, GLint, GLsizei count) { note_draw(count); }
void glDrawElements(GLenum, GLsizei count, GLenum, const void*) { note_draw(count); }
void glBegin(GLenum) { note_draw(0); }
void glEnd() {}
void glVertex2d(GLdouble, GLdouble) { ++counts().vertices; }
void glVertex2f(GLfloat, GLfloat) { ++counts().vertices; }
void glVertex2fv(const GLfloat*) { ++counts().vertices; }
void glVertex3d(GLdouble, GLdouble, GLdouble) { ++counts().vertices; }
void glClear(GLbitfield) {}
void glBlitFramebuffer(GLint, GLint, GLint, GLint, GLint, GLint, GLint, GLint, GLbitfield, GLenum) {
}

void glBufferData(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
    static const auto upload = driver(&glBufferData, "glBufferData");
    counts().bytes += static_cast<uint64_t>(size);
    upload(target, size, data, usage);
}

void glTexImage2D(GLenum target, GLint level, GLint kind, GLsizei width, GLsizei height,
                  GLint border, GLenum format, GLenum type, const void* data) {
    static const auto upload = driver(&glTexImage2D, "glTexImage2D");
    if (data)
        counts().bytes += 4 * static_cast<uint64_t>(width) * static_cast<uint64_t>(height);
    upload(target, level, kind, width, height, border, format, type, data);
}

} // extern "C"
