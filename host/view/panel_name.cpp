#include "host/view/panel_paint.h"

#include <GL/gl.h>

namespace host {

namespace {

/// A letter as polylines: two digits per point, x 0 to 4, y 0 to 8 with the baseline at 2 and the
/// x-height at 6; a space ends a polyline.
struct Letter {
    char character;
    const char* strokes;
};

constexpr Letter k_letters[] = {
    {'d', "4842 4332120305163645"}, {'e', "044445361605031242"},
    {'f', "48382722 0646"},         {'i', "2226 2728"},
    {'n', "0206 0516364542"},       {'o', "123243453616050312"},
    {'p', "0006 0312324345361605"}, {'r', "0206 05163645"},
    {'s', "4616051434433202"},      {'t', "28233242 0646"},
};

constexpr int k_advance = 6;

const char* strokes_of(char character) {
    for (const Letter& letter : k_letters)
        if (letter.character == character)
            return letter.strokes;
    return "";
}

void paint_letter(const char* strokes, float x, float y, float unit) {
    glBegin(GL_LINE_STRIP);
    for (; *strokes != '\0'; strokes += *strokes == ' ' ? 1 : 2) {
        if (*strokes == ' ') {
            glEnd();
            glBegin(GL_LINE_STRIP);
            continue;
        }
        glVertex2f(x + unit * float(strokes[0] - '0'), y + unit * float(strokes[1] - '2'));
    }
    glEnd();
}

} // namespace

void paint_name(const std::string& name, const Viewport& viewport) {
    const float unit = viewport.height >= 480 ? 2.0f : 1.5f;
    const float width = unit * float(k_advance * int(name.size()) - 2);
    const float left = 0.5f * (float(viewport.width) - width);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0.0, viewport.width, 0.0, viewport.height, -1.0, 1.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(GL_DEPTH_TEST);
    // First a light outline, so that the name is readable on any background.
    for (const bool is_shadow : {true, false}) {
        const GLfloat shade = is_shadow ? 0.86f : 0.10f;
        glColor3f(shade, shade, shade);
        glLineWidth(is_shadow ? 4.0f : 1.25f);
        for (size_t i = 0; i < name.size(); ++i)
            paint_letter(strokes_of(name[i]), left + unit * float(k_advance) * float(i),
                         5.0f * unit, unit);
    }
    glLineWidth(1.0f);
    glEnable(GL_DEPTH_TEST);
}

} // namespace host
