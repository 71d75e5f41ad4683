// Float GL wrapper: fixed-point conversion and the shadow matrix stacks.
#include "core/pvgl.h"

#include "foundation/kvflog.h"
#include "math/k3mmatrix.h"

namespace {

// One shadow stack. The extra place lets the 32nd push copy its top without
// leaving the array; the depth test stops the 33rd.
struct ShadowStack {
    K3MMATRIX matrix[PV_GL_STACK_DEPTH + 1];
    int depth;

    ShadowStack() : depth(0)
    {
        for (K3MMATRIX& m : matrix)
            for (float& element : m.m)
                element = 0.0f;
    }
    K3MMATRIX& top() { return matrix[depth]; }
};

ShadowStack shadowStacks[2];
int currentStack = PV_GL_MODELVIEW_STACK;

ShadowStack& current() { return shadowStacks[currentStack]; }

// top = left * top, with K3MMATRIX's product order.
void premultiplyTop(const K3MMATRIX& left) { current().top() = left * current().top(); }

void toFixed(const float* values, GLfixed* fixed, int count)
{
    for (int i = 0; i < count; i++)
        fixed[i] = PV_floatToFixed(values[i]);
}

K3MMATRIX orthoMatrix(float l, float r, float b, float t, float n, float f)
{
    K3MMATRIX o;
    o.m[0] = 2.0f / (r - l);
    o.m[5] = 2.0f / (t - b);
    o.m[10] = -2.0f / (f - n);
    o.m[12] = -(r + l) / (r - l);
    o.m[13] = -(t + b) / (t - b);
    o.m[14] = -(f + n) / (f - n);
    o.m[15] = 1.0f;
    return o;
}

// The shadow frustum is not the matrix GL builds: it lacks the factor n in
// elements 0 and 5 and carries the off-diagonal terms in transposed places.
// Only GL draws; the shadow is what PV_glGetFloatv reports.
K3MMATRIX frustumMatrix(float l, float r, float b, float t, float n, float f)
{
    K3MMATRIX fr;
    fr.m[0] = 2.0f / (r - l);
    fr.m[5] = 2.0f / (t - b);
    fr.m[2] = (r + l) / (r - l);
    fr.m[6] = (t + b) / (t - b);
    fr.m[10] = -(f + n) / (f - n);
    fr.m[11] = -2.0f * f * n / (f - n);
    fr.m[14] = -1.0f;
    fr.m[15] = 0.0f;
    return fr;
}

// Set while only the shadow stacks follow the matrix functions.
bool shadowOnly = false;

}  // namespace

bool PV_glShadowOnly(bool on)
{
    const bool previous = shadowOnly;
    shadowOnly = on;
    return previous;
}

void PV_glColor4f(float r, float g, float b, float a)
{
    glColor4x(PV_floatToFixed(r), PV_floatToFixed(g), PV_floatToFixed(b), PV_floatToFixed(a));
}

void PV_glClearColor(float r, float g, float b, float a)
{
    glClearColorx(PV_floatToFixed(r), PV_floatToFixed(g), PV_floatToFixed(b), PV_floatToFixed(a));
}

void PV_glClearDepthf(float depth) { glClearDepthx(PV_floatToFixed(depth)); }

void PV_glAlphaFunc(GLenum func, float ref) { glAlphaFuncx(func, PV_floatToFixed(ref)); }

void PV_glLightf(GLenum light, GLenum pname, float value) { glLightx(light, pname, PV_floatToFixed(value)); }

void PV_glLightfv(GLenum light, GLenum pname, const float* values)
{
    GLfixed fixed[4];
    toFixed(values, fixed, 4);
    glLightxv(light, pname, fixed);
}

void PV_glMaterialf(GLenum face, GLenum pname, float value)
{
    glMaterialx(face, pname, PV_floatToFixed(value));
}

void PV_glMaterialfv(GLenum face, GLenum pname, const float* values)
{
    GLfixed fixed[4];
    toFixed(values, fixed, 4);
    glMaterialxv(face, pname, fixed);
}

void PV_glLightModelf(GLenum pname, float value) { glLightModelx(pname, PV_floatToFixed(value)); }

void PV_glLightModelfv(GLenum pname, const float* values)
{
    GLfixed fixed[4];
    toFixed(values, fixed, 4);
    glLightModelxv(pname, fixed);
}

void PV_glMatrixMode(GLenum mode)
{
    if (mode == GL_MODELVIEW)
        currentStack = PV_GL_MODELVIEW_STACK;
    else if (mode == GL_PROJECTION)
        currentStack = PV_GL_PROJECTION_STACK;
    glMatrixMode(mode);
}

void PV_glLoadIdentity()
{
    current().top().setIdentity();
    if (!shadowOnly)
        glLoadIdentity();
}

void PV_glLoadMatrixf(const float* m)
{
    current().top() = K3MMATRIX(m);
    if (shadowOnly)
        return;
    GLfixed fixed[16];
    toFixed(m, fixed, 16);
    glLoadMatrixx(fixed);
}

void PV_glMultMatrixf(const float* m)
{
    premultiplyTop(K3MMATRIX(m));
    if (shadowOnly)
        return;
    GLfixed fixed[16];
    toFixed(m, fixed, 16);
    glMultMatrixx(fixed);
}

void PV_glTranslatef(float x, float y, float z)
{
    K3MMATRIX translation;
    translation.setTranslation(x, y, z);
    premultiplyTop(translation);
    if (!shadowOnly)
        glTranslatex(PV_floatToFixed(x), PV_floatToFixed(y), PV_floatToFixed(z));
}

void PV_glRotatef(float angle, float x, float y, float z)
{
    K3MMATRIX rotation;
    rotation.setRotation(angle, x, y, z);
    premultiplyTop(rotation);
    if (!shadowOnly)
        glRotatex(PV_floatToFixed(angle), PV_floatToFixed(x), PV_floatToFixed(y), PV_floatToFixed(z));
}

void PV_glOrtho(float left, float right, float bottom, float top, float zNear, float zFar)
{
    premultiplyTop(orthoMatrix(left, right, bottom, top, zNear, zFar));
    glOrthox(PV_floatToFixed(left), PV_floatToFixed(right), PV_floatToFixed(bottom), PV_floatToFixed(top),
             PV_floatToFixed(zNear), PV_floatToFixed(zFar));
}

void PV_glFrustum(float left, float right, float bottom, float top, float zNear, float zFar)
{
    premultiplyTop(frustumMatrix(left, right, bottom, top, zNear, zFar));
    glFrustumx(PV_floatToFixed(left), PV_floatToFixed(right), PV_floatToFixed(bottom), PV_floatToFixed(top),
               PV_floatToFixed(zNear), PV_floatToFixed(zFar));
}

void PV_glPushMatrix()
{
    ShadowStack& stack = current();
    if (stack.depth >= PV_GL_STACK_DEPTH) {
        kvfLog("   [!] Stack overflow in glWrapper\n");
        return;
    }
    stack.depth++;
    stack.matrix[stack.depth] = stack.matrix[stack.depth - 1];
    if (!shadowOnly)
        glPushMatrix();
}

void PV_glPopMatrix()
{
    ShadowStack& stack = current();
    if (stack.depth <= 0) {
        kvfLog("   [!] Stack underflow in glWrapper\n");
        return;
    }
    stack.depth--;
    stack.matrix[stack.depth + 1].setIdentity();
    if (!shadowOnly)
        glPopMatrix();
}

void PV_glGetFloatv(int which, float* out)
{
    if (which != PV_GL_MODELVIEW_STACK && which != PV_GL_PROJECTION_STACK)
        return;
    const K3MMATRIX& top = shadowStacks[which].top();
    for (int i = 0; i < 16; i++)
        out[i] = top.m[i];
}
