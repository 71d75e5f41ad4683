#include "glcalls.h"

#include <dlfcn.h>

#include <GLES/gl.h>

namespace pvbench {

GLCALLCOUNTS& glCalls()
{
    static GLCALLCOUNTS counts;
    return counts;
}

}  // namespace pvbench

#define PV_FORWARD(result, function, parameters, arguments, counted)                                         \
    extern "C" result function parameters                                                                    \
    {                                                                                                        \
        static const auto real = reinterpret_cast<decltype(&::function)>(dlsym(RTLD_NEXT, #function));       \
        pvbench::glCalls().all++;                                                                            \
        counted;                                                                                             \
        return real arguments;                                                                               \
    }
#define PV_COUNTED(result, function, parameters, arguments)                                                  \
    PV_FORWARD(result, function, parameters, arguments, )
#define PV_COUNTED_DRAW(result, function, parameters, arguments)                                             \
    PV_FORWARD(result, function, parameters, arguments, pvbench::glCalls().draws++)

PV_COUNTED(void, glEnable, (GLenum cap), (cap))
PV_COUNTED(void, glDisable, (GLenum cap), (cap))
PV_COUNTED(void, glEnableClientState, (GLenum array), (array))
PV_COUNTED(void, glDisableClientState, (GLenum array), (array))
PV_COUNTED(void, glHint, (GLenum target, GLenum mode), (target, mode))
PV_COUNTED(void, glShadeModel, (GLenum mode), (mode))
PV_COUNTED(void, glDepthFunc, (GLenum func), (func))
PV_COUNTED(void, glCullFace, (GLenum mode), (mode))
PV_COUNTED(void, glBlendFunc, (GLenum sfactor, GLenum dfactor), (sfactor, dfactor))
PV_COUNTED(void, glAlphaFuncx, (GLenum func, GLfixed ref), (func, ref))
PV_COUNTED(void, glClearColorx, (GLfixed r, GLfixed g, GLfixed b, GLfixed a), (r, g, b, a))
PV_COUNTED(void, glClearDepthx, (GLfixed depth), (depth))
PV_COUNTED(void, glClearStencil, (GLint s), (s))
PV_COUNTED(void, glClear, (GLbitfield mask), (mask))
PV_COUNTED(void, glViewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))
PV_COUNTED(void, glScissor, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))
PV_COUNTED(void, glReadPixels,
           (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels),
           (x, y, width, height, format, type, pixels))
PV_COUNTED(void, glFlush, (), ())
PV_COUNTED(void, glFinish, (), ())
PV_COUNTED(void, glColor4x, (GLfixed r, GLfixed g, GLfixed b, GLfixed a), (r, g, b, a))
PV_COUNTED(void, glLightx, (GLenum light, GLenum pname, GLfixed param), (light, pname, param))
PV_COUNTED(void, glLightxv, (GLenum light, GLenum pname, const GLfixed* params), (light, pname, params))
PV_COUNTED(void, glLightModelx, (GLenum pname, GLfixed param), (pname, param))
PV_COUNTED(void, glLightModelxv, (GLenum pname, const GLfixed* param), (pname, param))
PV_COUNTED(void, glMaterialx, (GLenum face, GLenum pname, GLfixed param), (face, pname, param))
PV_COUNTED(void, glMaterialxv, (GLenum face, GLenum pname, const GLfixed* param), (face, pname, param))
PV_COUNTED(void, glGenTextures, (GLsizei n, GLuint* textures), (n, textures))
PV_COUNTED(void, glDeleteTextures, (GLsizei n, const GLuint* textures), (n, textures))
PV_COUNTED(void, glBindTexture, (GLenum target, GLuint texture), (target, texture))
PV_COUNTED(void, glTexParameterx, (GLenum target, GLenum pname, GLfixed param), (target, pname, param))
PV_COUNTED(void, glPixelStorei, (GLenum pname, GLint param), (pname, param))
PV_COUNTED(void, glTexImage2D,
           (GLenum target, GLint level, GLint internalformat, GLsizei width, GLsizei height, GLint border,
            GLenum format, GLenum type, const void* pixels),
           (target, level, internalformat, width, height, border, format, type, pixels))
PV_COUNTED(void, glTexSubImage2D,
           (GLenum target, GLint level, GLint xoffset, GLint yoffset, GLsizei width, GLsizei height,
            GLenum format, GLenum type, const void* pixels),
           (target, level, xoffset, yoffset, width, height, format, type, pixels))
PV_COUNTED(void, glDepthMask, (GLboolean flag), (flag))
PV_COUNTED(void, glVertexPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer),
           (size, type, stride, pointer))
PV_COUNTED(void, glColorPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer),
           (size, type, stride, pointer))
PV_COUNTED(void, glTexCoordPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer),
           (size, type, stride, pointer))
PV_COUNTED_DRAW(void, glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices),
                (mode, count, type, indices))
PV_COUNTED(void, glMatrixMode, (GLenum mode), (mode))
PV_COUNTED(void, glLoadIdentity, (), ())
PV_COUNTED(void, glLoadMatrixx, (const GLfixed* m), (m))
PV_COUNTED(void, glMultMatrixx, (const GLfixed* m), (m))
PV_COUNTED(void, glPushMatrix, (), ())
PV_COUNTED(void, glPopMatrix, (), ())
PV_COUNTED(void, glRotatex, (GLfixed angle, GLfixed x, GLfixed y, GLfixed z), (angle, x, y, z))
PV_COUNTED(void, glTranslatex, (GLfixed x, GLfixed y, GLfixed z), (x, y, z))
PV_COUNTED(void, glFrustumx, (GLfixed l, GLfixed r, GLfixed b, GLfixed t, GLfixed n, GLfixed f),
           (l, r, b, t, n, f))
PV_COUNTED(void, glOrthox, (GLfixed l, GLfixed r, GLfixed b, GLfixed t, GLfixed n, GLfixed f),
           (l, r, b, t, n, f))
PV_COUNTED(void, glNormalPointer, (GLenum type, GLsizei stride, const void* pointer), (type, stride, pointer))
PV_COUNTED_DRAW(void, glDrawArrays, (GLenum mode, GLint first, GLsizei count), (mode, first, count))
PV_COUNTED(void, glGetIntegerv, (GLenum pname, GLint* data), (pname, data))
PV_COUNTED(const GLubyte*, glGetString, (GLenum name), (name))
PV_COUNTED(void, glGenBuffers, (GLsizei n, GLuint* buffers), (n, buffers))
PV_COUNTED(void, glDeleteBuffers, (GLsizei n, const GLuint* buffers), (n, buffers))
PV_COUNTED(void, glBindBuffer, (GLenum target, GLuint buffer), (target, buffer))
PV_COUNTED(void, glBufferData, (GLenum target, GLsizeiptr size, const void* data, GLenum usage),
           (target, size, data, usage))
PV_COUNTED(void, glBufferSubData, (GLenum target, GLintptr offset, GLsizeiptr size, const void* data),
           (target, offset, size, data))
