#include "window/gl_target.h"

#include <GL/glext.h>

#include <algorithm>

namespace window {
namespace {

constexpr int k_samples = 4;

} // namespace

GlTarget::~GlTarget() { release(); }

void GlTarget::release() {
    if (frame_ == 0)
        return;
    const GLuint frames[] = {frame_, smooth_frame_}, buffers[] = {colour_, depth_};
    glDeleteFramebuffers(2, frames);
    glDeleteRenderbuffers(2, buffers);
    glDeleteTextures(1, &texture_);
    frame_ = 0;
}

bool GlTarget::resize(int width, int height) {
    width = std::max(1, width);
    height = std::max(1, height);
    if (width == width_ && height == height_)
        return false;
    release();
    width_ = width;
    height_ = height;
    GLint max_samples = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &max_samples);
    samples_ = std::min(k_samples, static_cast<int>(max_samples));

    glGenTextures(1, &texture_);
    glBindTexture(GL_TEXTURE_2D, texture_);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGB8, width, height, 0, GL_RGB, GL_UNSIGNED_BYTE, nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glBindTexture(GL_TEXTURE_2D, 0);
    glGenFramebuffers(1, &frame_);
    glBindFramebuffer(GL_FRAMEBUFFER, frame_);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture_, 0);

    glGenFramebuffers(1, &smooth_frame_);
    glBindFramebuffer(GL_FRAMEBUFFER, smooth_frame_);
    glGenRenderbuffers(1, &colour_);
    glBindRenderbuffer(GL_RENDERBUFFER, colour_);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples_, GL_RGB8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colour_);
    glGenRenderbuffers(1, &depth_);
    glBindRenderbuffer(GL_RENDERBUFFER, depth_);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples_, GL_DEPTH_COMPONENT24, width,
                                     height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth_);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    return true;
}

void GlTarget::bind() { glBindFramebuffer(GL_FRAMEBUFFER, smooth_frame_); }

void GlTarget::unbind() {
    glDisable(GL_SCISSOR_TEST); // the scissor would clip the blit as well
    glBindFramebuffer(GL_READ_FRAMEBUFFER, smooth_frame_);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, frame_);
    glBlitFramebuffer(0, 0, width_, height_, 0, 0, width_, height_, GL_COLOR_BUFFER_BIT,
                      GL_NEAREST);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

} // namespace window
