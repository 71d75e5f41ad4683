/// \file
/// Float interface to the fixed-point GL profile: every PV_gl* function
/// converts its float arguments to 16.16 fixed point and calls the matching
/// fixed-point GL entry point. The matrix functions also keep float shadow
/// copies of the model-view and projection stacks, because this GL profile
/// cannot hand its matrices back; PV_glGetFloatv reads the shadow.
#ifndef PEVRANO_CORE_PVGL_H
#define PEVRANO_CORE_PVGL_H

#include <GLES/gl.h>

/// Depth of each shadow stack: at most this many pushes over the base matrix.
#define PV_GL_STACK_DEPTH 32
/// Selectors of PV_glGetFloatv (stack indices, not GL enumerations).
///@{
#define PV_GL_MODELVIEW_STACK 0
#define PV_GL_PROJECTION_STACK 1
///@}

/// 16.16 fixed point: the float times 65536, truncated toward zero, no
/// rounding. Values beyond the 16.16 range (32768 and above, below -32768)
/// saturate to the largest or smallest fixed value; NaN gives 0.
inline GLfixed PV_floatToFixed(float value)
{
    const float scaled = value * 65536.0f;
    // -2^31 and 2^31 are exact floats: every value between them truncates
    // into a 32-bit integer. NaN fails both tests.
    if (scaled >= -2147483648.0f && scaled < 2147483648.0f)
        return static_cast<GLfixed>(scaled);
    if (scaled > 0.0f)
        return 2147483647;
    return scaled < 0.0f ? -2147483647 - 1 : 0;
}

/// Float forms of the fixed-point colour, clear, alpha, light and material
/// calls, with the same arguments as the GL calls they forward to. The vector
/// forms always convert four values.
///@{
void PV_glColor4f(float r, float g, float b, float a);
void PV_glClearColor(float r, float g, float b, float a);
void PV_glClearDepthf(float depth);
void PV_glAlphaFunc(GLenum func, float ref);

void PV_glLightf(GLenum light, GLenum pname, float value);
void PV_glLightfv(GLenum light, GLenum pname, const float* values);
void PV_glMaterialf(GLenum face, GLenum pname, float value);
void PV_glMaterialfv(GLenum face, GLenum pname, const float* values);
void PV_glLightModelf(GLenum pname, float value);
void PV_glLightModelfv(GLenum pname, const float* values);
///@}

/// Matrix calls: forwarded to GL and applied to the float shadow of the
/// stack in use. GL_MODELVIEW selects the model-view shadow, GL_PROJECTION the
/// projection shadow; any other mode leaves the shadow on the stack it was
/// following.
///@{
void PV_glMatrixMode(GLenum mode);
void PV_glLoadIdentity();
void PV_glLoadMatrixf(const float* m);
void PV_glMultMatrixf(const float* m);
void PV_glTranslatef(float x, float y, float z);
void PV_glRotatef(float angle, float x, float y, float z);
void PV_glOrtho(float left, float right, float bottom, float top, float zNear, float zFar);
void PV_glFrustum(float left, float right, float bottom, float top, float zNear, float zFar);
void PV_glPushMatrix();
void PV_glPopMatrix();
///@}

/// While on, the matrix functions above change the shadow stacks only, not
/// GL's matrices; PV_glMatrixMode, PV_glOrtho and PV_glFrustum still reach GL.
/// The render list's pass and a node's world matrix are worked out this way
/// (every draw loads its own), and their balanced pushes and pops leave GL's
/// matrix as it was. Returns the previous setting.
bool PV_glShadowOnly(bool on);

/// Copies the top matrix of stack 0 (model-view) or 1 (projection) into
/// out (16 floats); any other selector copies nothing.
void PV_glGetFloatv(int which, float* out);

#endif
