// GL call recorder: definitions of the GL entry points in the test executable
// that forward to the real GL library and record each call as text.
#include "support/glrecorder.h"

#include <dlfcn.h>

#include <GLES/gl.h>
#include <GLES/glext.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace pvtest {

namespace {

    GlRecorder* activeRecorder = nullptr;

    // The real entry point: the next definition after this executable, or the
    // one in the GL library opened explicitly.
    void* realSymbol(const char* name)
    {
        void* symbol = dlsym(RTLD_NEXT, name);
        if (!symbol) {
            static void* library = dlopen("libGLESv1_CM.so.1", RTLD_NOW | RTLD_GLOBAL);
            if (library)
                symbol = dlsym(library, name);
        }
        if (!symbol) {
            fprintf(stderr, "glrecorder: no GL entry point %s\n", name);
            abort();
        }
        return symbol;
    }

    const std::map<GLenum, const char*>& enumNames()
    {
#define PV_ENUM(e)                                                                                           \
    {                                                                                                        \
        e, #e                                                                                                \
    }
        static const std::map<GLenum, const char*> names = {
            // Capabilities and client arrays.
            PV_ENUM(GL_BLEND), PV_ENUM(GL_CULL_FACE), PV_ENUM(GL_DEPTH_TEST), PV_ENUM(GL_SCISSOR_TEST),
            PV_ENUM(GL_ALPHA_TEST), PV_ENUM(GL_DITHER), PV_ENUM(GL_LIGHTING), PV_ENUM(GL_TEXTURE_2D),
            PV_ENUM(GL_NORMALIZE), PV_ENUM(GL_COLOR_MATERIAL), PV_ENUM(GL_VERTEX_ARRAY),
            PV_ENUM(GL_NORMAL_ARRAY), PV_ENUM(GL_COLOR_ARRAY), PV_ENUM(GL_TEXTURE_COORD_ARRAY),
            PV_ENUM(GL_LIGHT0), PV_ENUM(GL_LIGHT1), PV_ENUM(GL_LIGHT2), PV_ENUM(GL_LIGHT3),
            PV_ENUM(GL_LIGHT4), PV_ENUM(GL_LIGHT5), PV_ENUM(GL_LIGHT6), PV_ENUM(GL_LIGHT7),
            // Matrices.
            PV_ENUM(GL_MODELVIEW), PV_ENUM(GL_PROJECTION), PV_ENUM(GL_TEXTURE),
            // Comparison functions.
            PV_ENUM(GL_NEVER), PV_ENUM(GL_LESS), PV_ENUM(GL_EQUAL), PV_ENUM(GL_LEQUAL), PV_ENUM(GL_GREATER),
            PV_ENUM(GL_NOTEQUAL), PV_ENUM(GL_GEQUAL), PV_ENUM(GL_ALWAYS),
            // Blend factors (GL_ZERO and GL_ONE are written by blendFactorText).
            PV_ENUM(GL_SRC_COLOR), PV_ENUM(GL_ONE_MINUS_SRC_COLOR), PV_ENUM(GL_SRC_ALPHA),
            PV_ENUM(GL_ONE_MINUS_SRC_ALPHA), PV_ENUM(GL_BLEND_SRC), PV_ENUM(GL_BLEND_DST),
            PV_ENUM(GL_DST_ALPHA), PV_ENUM(GL_ONE_MINUS_DST_ALPHA), PV_ENUM(GL_DST_COLOR),
            PV_ENUM(GL_ONE_MINUS_DST_COLOR), PV_ENUM(GL_SRC_ALPHA_SATURATE),
            // Faces, shading, hints.
            PV_ENUM(GL_FRONT), PV_ENUM(GL_BACK), PV_ENUM(GL_FRONT_AND_BACK), PV_ENUM(GL_FLAT),
            PV_ENUM(GL_SMOOTH), PV_ENUM(GL_PERSPECTIVE_CORRECTION_HINT), PV_ENUM(GL_DONT_CARE),
            PV_ENUM(GL_FASTEST), PV_ENUM(GL_NICEST),
            // Lights, materials, light model.
            PV_ENUM(GL_AMBIENT), PV_ENUM(GL_DIFFUSE), PV_ENUM(GL_SPECULAR), PV_ENUM(GL_POSITION),
            PV_ENUM(GL_SPOT_DIRECTION), PV_ENUM(GL_SPOT_EXPONENT), PV_ENUM(GL_SPOT_CUTOFF),
            PV_ENUM(GL_CONSTANT_ATTENUATION), PV_ENUM(GL_LINEAR_ATTENUATION),
            PV_ENUM(GL_QUADRATIC_ATTENUATION), PV_ENUM(GL_EMISSION), PV_ENUM(GL_SHININESS),
            PV_ENUM(GL_AMBIENT_AND_DIFFUSE), PV_ENUM(GL_LIGHT_MODEL_TWO_SIDE),
            PV_ENUM(GL_LIGHT_MODEL_AMBIENT),
            // Textures.
            PV_ENUM(GL_NEAREST), PV_ENUM(GL_LINEAR), PV_ENUM(GL_NEAREST_MIPMAP_NEAREST),
            PV_ENUM(GL_LINEAR_MIPMAP_LINEAR), PV_ENUM(GL_TEXTURE_MAG_FILTER), PV_ENUM(GL_TEXTURE_MIN_FILTER),
            PV_ENUM(GL_TEXTURE_WRAP_S), PV_ENUM(GL_TEXTURE_WRAP_T), PV_ENUM(GL_REPEAT),
            PV_ENUM(GL_CLAMP_TO_EDGE), PV_ENUM(GL_UNPACK_ALIGNMENT),
            // Pixel formats and queries.
            PV_ENUM(GL_UNSIGNED_BYTE), PV_ENUM(GL_RGB), PV_ENUM(GL_RGBA), PV_ENUM(GL_UNSIGNED_SHORT_5_6_5),
            PV_ENUM(GL_UNSIGNED_SHORT), PV_ENUM(GL_FIXED), PV_ENUM(GL_VENDOR), PV_ENUM(GL_RENDERER),
            PV_ENUM(GL_VERSION), PV_ENUM(GL_EXTENSIONS), PV_ENUM(GL_RED_BITS), PV_ENUM(GL_GREEN_BITS),
            PV_ENUM(GL_BLUE_BITS), PV_ENUM(GL_ALPHA_BITS), PV_ENUM(GL_DEPTH_BITS), PV_ENUM(GL_STENCIL_BITS),
            PV_ENUM(GL_VIEWPORT), PV_ENUM(GL_MAX_TEXTURE_SIZE), PV_ENUM(GL_MAX_TEXTURE_UNITS),
            PV_ENUM(GL_MAX_LIGHTS),
            // Arrays and drawing.
            PV_ENUM(GL_TRIANGLES),
            // Buffer objects.
            PV_ENUM(GL_ARRAY_BUFFER), PV_ENUM(GL_STATIC_DRAW)};
#undef PV_ENUM
        return names;
    }

    // Bytes of one pixel of an upload's source, 0 for a kind not known here.
    size_t sourcePixelBytes(GLenum format, GLenum type)
    {
        if (type != GL_UNSIGNED_BYTE)
            return 2;  // the packed 16-bit kinds
        switch (format) {
        case GL_RGBA:
            return 4;
        case GL_RGB:
            return 3;
        case GL_LUMINANCE_ALPHA:
            return 2;
        default:
            return 1;
        }
    }

    std::string hex(unsigned int value)
    {
        char text[16];
        snprintf(text, sizeof(text), "0x%04X", value);
        return text;
    }

    std::string enumText(GLenum value)
    {
        auto found = enumNames().find(value);
        return found != enumNames().end() ? found->second : hex(value);
    }

    std::string primitiveText(GLenum mode)
    {
        static const char* const names[] = {"GL_POINTS",      "GL_LINES",     "GL_LINE_LOOP",
                                            "GL_LINE_STRIP",  "GL_TRIANGLES", "GL_TRIANGLE_STRIP",
                                            "GL_TRIANGLE_FAN"};
        return mode < 7 ? names[mode] : hex(mode);
    }

    std::string blendFactorText(GLenum factor)
    {
        if (factor == GL_ZERO)
            return "GL_ZERO";
        if (factor == GL_ONE)
            return "GL_ONE";
        return enumText(factor);
    }

    std::string clearMaskText(GLbitfield mask)
    {
        static const std::pair<GLbitfield, const char*> bits[] = {
            {GL_COLOR_BUFFER_BIT, "GL_COLOR_BUFFER_BIT"},
            {GL_DEPTH_BUFFER_BIT, "GL_DEPTH_BUFFER_BIT"},
            {GL_STENCIL_BUFFER_BIT, "GL_STENCIL_BUFFER_BIT"}};
        std::string text;
        for (const auto& bit : bits) {
            if (!(mask & bit.first))
                continue;
            text += (text.empty() ? "" : "|") + std::string(bit.second);
            mask &= ~bit.first;
        }
        if (mask || text.empty())
            text += (text.empty() ? "" : "|") + hex(mask);
        return text;
    }

    // Number of values behind a vector parameter.
    int lightValueCount(GLenum pname)
    {
        if (pname == GL_SPOT_DIRECTION)
            return 3;
        bool colourOrPosition =
            pname == GL_AMBIENT || pname == GL_DIFFUSE || pname == GL_SPECULAR || pname == GL_POSITION;
        return colourOrPosition ? 4 : 1;
    }

    int materialValueCount(GLenum pname) { return pname == GL_SHININESS ? 1 : 4; }
    int lightModelValueCount(GLenum pname) { return pname == GL_LIGHT_MODEL_AMBIENT ? 4 : 1; }

    // Builds "name(arg,arg,...)".
    class CallText {
    public:
        explicit CallText(const char* function) : text_(function) { text_ += '('; }
        CallText& raw(const std::string& argument)
        {
            if (text_.back() != '(')
                text_ += ',';
            text_ += argument;
            return *this;
        }
        CallText& en(GLenum value) { return raw(enumText(value)); }
        CallText& num(long long value) { return raw(std::to_string(value)); }
        template <typename T> CallText& values(const T* data, int count)
        {
            std::string list = "{";
            for (int i = 0; i < count && data; i++)
                list += (i ? "," : "") + std::to_string(data[i]);
            return raw(list + "}");
        }
        std::string done() { return text_ + ')'; }

    private:
        std::string text_;
    };

}  // namespace

GlRecorder::~GlRecorder() { stop(); }

void GlRecorder::start()
{
    calls_.clear();
    activeRecorder = this;
}

void GlRecorder::stop()
{
    if (activeRecorder == this)
        activeRecorder = nullptr;
}

std::string GlRecorder::functionOf(const std::string& call) { return call.substr(0, call.find('(')); }

std::vector<long long> GlRecorder::numbersOf(const std::string& call)
{
    std::vector<long long> numbers;
    size_t i = call.find('(');
    while (i != std::string::npos && i < call.size()) {
        char separator = call[i++];
        bool startsNumber = (separator == '(' || separator == ',' || separator == '{') && i < call.size() &&
                            (isdigit(static_cast<unsigned char>(call[i])) || call[i] == '-');
        bool hexValue = call.compare(i, 2, "0x") == 0;
        if (startsNumber && !hexValue)
            numbers.push_back(strtoll(call.c_str() + i, nullptr, 10));
        i = call.find_first_of("(,{", i);
    }
    return numbers;
}

std::vector<std::string> GlRecorder::filter(const std::string& function) const
{
    return filter(std::vector<std::string> {function});
}

std::vector<std::string> GlRecorder::filter(const std::vector<std::string>& functions) const
{
    std::vector<std::string> matching;
    for (const std::string& call : calls_)
        for (const std::string& function : functions)
            if (functionOf(call) == function)
                matching.push_back(call);
    return matching;
}

size_t GlRecorder::countCall(const std::string& call) const
{
    size_t count = 0;
    for (const std::string& recorded : calls_)
        count += recorded == call;
    return count;
}

namespace {

    volatile unsigned int uploadSourceSum = 0;

    // Mesa is not built with the sanitizers, so a bad read inside it goes
    // unseen; reading every source byte here first puts it under their eyes.
    void readUploadSource(GLsizei width, GLsizei height, GLenum format, GLenum type, const void* pixels)
    {
        if (!pixels || width <= 0 || height <= 0)
            return;
        static const auto getIntegerv =
            reinterpret_cast<decltype(&::glGetIntegerv)>(realSymbol("glGetIntegerv"));
        GLint alignment = 4;
        getIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
        const size_t lineBytes = size_t(width) * sourcePixelBytes(format, type);
        const size_t rowStride = (lineBytes + size_t(alignment) - 1) / size_t(alignment) * size_t(alignment);
        const size_t total = rowStride * size_t(height - 1) + lineBytes;
        const volatile unsigned char* bytes = static_cast<const unsigned char*>(pixels);
        unsigned int sum = 0;
        for (size_t i = 0; i < total; i++)
            sum += bytes[i];
        uploadSourceSum = sum;
    }

}  // namespace

std::string GlRecorder::text() const
{
    std::string all;
    for (const std::string& call : calls_)
        all += call + "\n";
    return all;
}

}  // namespace pvtest

using pvtest::activeRecorder;
using pvtest::CallText;

// Defines the entry point `result function parameters`: while a recorder is
// active it appends the call's text (the function name, then the arguments
// written by the CallText chain `recorded`), then it forwards `arguments` to
// the real entry point.
#define PV_INTERPOSE(result, function, parameters, arguments, recorded)                                      \
    PV_INTERPOSE_CHECKED(result, function, parameters, arguments, recorded, )
// The same, running `check` before the call is forwarded.
#define PV_INTERPOSE_CHECKED(result, function, parameters, arguments, recorded, check)                       \
    result function parameters                                                                               \
    {                                                                                                        \
        if (activeRecorder)                                                                                  \
            activeRecorder->append(CallText(#function) recorded.done());                                     \
        check;                                                                                               \
        static const auto real = reinterpret_cast<decltype(&::function)>(pvtest::realSymbol(#function));     \
        return real arguments;                                                                               \
    }

// Capabilities and fixed state.
PV_INTERPOSE(void, glEnable, (GLenum cap), (cap), .en(cap))
PV_INTERPOSE(void, glDisable, (GLenum cap), (cap), .en(cap))
PV_INTERPOSE(void, glEnableClientState, (GLenum array), (array), .en(array))
PV_INTERPOSE(void, glDisableClientState, (GLenum array), (array), .en(array))
PV_INTERPOSE(void, glHint, (GLenum target, GLenum mode), (target, mode), .en(target).en(mode))
PV_INTERPOSE(void, glShadeModel, (GLenum mode), (mode), .en(mode))
PV_INTERPOSE(void, glDepthFunc, (GLenum func), (func), .en(func))
PV_INTERPOSE(void, glCullFace, (GLenum mode), (mode), .en(mode))
PV_INTERPOSE(void, glBlendFunc, (GLenum sfactor, GLenum dfactor), (sfactor, dfactor),
             .raw(pvtest::blendFactorText(sfactor)).raw(pvtest::blendFactorText(dfactor)))
PV_INTERPOSE(void, glAlphaFuncx, (GLenum func, GLfixed ref), (func, ref), .en(func).num(ref))
// Clearing, viewport, scissor, pixels.
PV_INTERPOSE(void, glClearColorx, (GLfixed r, GLfixed g, GLfixed b, GLfixed a), (r, g, b, a),
             .num(r).num(g).num(b).num(a))
PV_INTERPOSE(void, glClearDepthx, (GLfixed depth), (depth), .num(depth))
PV_INTERPOSE(void, glClearStencil, (GLint s), (s), .num(s))
PV_INTERPOSE(void, glClear, (GLbitfield mask), (mask), .raw(pvtest::clearMaskText(mask)))
PV_INTERPOSE(void, glViewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height),
             .num(x).num(y).num(width).num(height))
PV_INTERPOSE(void, glScissor, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height),
             .num(x).num(y).num(width).num(height))
PV_INTERPOSE(void, glReadPixels,
             (GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels),
             (x, y, width, height, format, type, pixels),
             .num(x).num(y).num(width).num(height).en(format).en(type))
PV_INTERPOSE(void, glFlush, (), (), )
PV_INTERPOSE(void, glFinish, (), (), )

// Colour, lights, materials.
PV_INTERPOSE(void, glColor4x, (GLfixed r, GLfixed g, GLfixed b, GLfixed a), (r, g, b, a),
             .num(r).num(g).num(b).num(a))
PV_INTERPOSE(void, glLightx, (GLenum light, GLenum pname, GLfixed param), (light, pname, param),
             .en(light).en(pname).num(param))
PV_INTERPOSE(void, glLightxv, (GLenum light, GLenum pname, const GLfixed* params), (light, pname, params),
             .en(light).en(pname).values(params, pvtest::lightValueCount(pname)))
PV_INTERPOSE(void, glLightModelx, (GLenum pname, GLfixed param), (pname, param), .en(pname).num(param))
PV_INTERPOSE(void, glLightModelxv, (GLenum pname, const GLfixed* param), (pname, param),
             .en(pname).values(param, pvtest::lightModelValueCount(pname)))
PV_INTERPOSE(void, glMaterialx, (GLenum face, GLenum pname, GLfixed param), (face, pname, param),
             .en(face).en(pname).num(param))
PV_INTERPOSE(void, glMaterialxv, (GLenum face, GLenum pname, const GLfixed* param), (face, pname, param),
             .en(face).en(pname).values(param, pvtest::materialValueCount(pname)))
// Textures.
PV_INTERPOSE(void, glGenTextures, (GLsizei n, GLuint* textures), (n, textures), .num(n))
PV_INTERPOSE(void, glDeleteTextures, (GLsizei n, const GLuint* textures), (n, textures),
             .num(n).values(textures, n))
PV_INTERPOSE(void, glBindTexture, (GLenum target, GLuint texture), (target, texture),
             .en(target).num(texture))
PV_INTERPOSE(void, glTexParameterx, (GLenum target, GLenum pname, GLfixed param), (target, pname, param),
             .en(target).en(pname).en(GLenum(param)))
PV_INTERPOSE(void, glPixelStorei, (GLenum pname, GLint param), (pname, param), .en(pname).num(param))
PV_INTERPOSE_CHECKED(
    void, glTexImage2D,
    (GLenum target, GLint level, GLint internalformat, GLsizei width, GLsizei height, GLint border,
     GLenum format, GLenum type, const void* pixels),
    (target, level, internalformat, width, height, border, format, type, pixels),
    .en(target).num(level).en(GLenum(internalformat)).num(width).num(height).num(border).en(format).en(type),
    pvtest::readUploadSource(width, height, format, type, pixels))
PV_INTERPOSE_CHECKED(
    void, glTexSubImage2D,
    (GLenum target, GLint level, GLint xoffset, GLint yoffset, GLsizei width, GLsizei height, GLenum format,
     GLenum type, const void* pixels),
    (target, level, xoffset, yoffset, width, height, format, type, pixels),
    .en(target).num(level).num(xoffset).num(yoffset).num(width).num(height).en(format).en(type),
    pvtest::readUploadSource(width, height, format, type, pixels))

// Depth writes, client arrays (data pointers are left out), indexed triangles.
PV_INTERPOSE(void, glDepthMask, (GLboolean flag), (flag), .num(flag))
PV_INTERPOSE(void, glVertexPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer),
             (size, type, stride, pointer), .num(size).en(type).num(stride))
PV_INTERPOSE(void, glColorPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer),
             (size, type, stride, pointer), .num(size).en(type).num(stride))
PV_INTERPOSE(void, glTexCoordPointer, (GLint size, GLenum type, GLsizei stride, const void* pointer),
             (size, type, stride, pointer), .num(size).en(type).num(stride))
PV_INTERPOSE(void, glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices),
             (mode, count, type, indices), .raw(pvtest::primitiveText(mode)).num(count).en(type))

// Buffer objects (names and data pointers are left out, bound names kept
// as 0 or not).
PV_INTERPOSE(void, glGenBuffers, (GLsizei n, GLuint* buffers), (n, buffers), .num(n))
PV_INTERPOSE(void, glDeleteBuffers, (GLsizei n, const GLuint* buffers), (n, buffers), .num(n))
PV_INTERPOSE(void, glBindBuffer, (GLenum target, GLuint buffer), (target, buffer),
             .en(target).raw(buffer ? "buffer" : "0"))
PV_INTERPOSE(void, glBufferData, (GLenum target, GLsizeiptr size, const void* data, GLenum usage),
             (target, size, data, usage), .en(target).num(int(size)).en(usage))
PV_INTERPOSE(void, glBufferSubData, (GLenum target, GLintptr offset, GLsizeiptr size, const void* data),
             (target, offset, size, data), .en(target).num(int(offset)).num(int(size)))

// Matrices.
PV_INTERPOSE(void, glMatrixMode, (GLenum mode), (mode), .en(mode))
PV_INTERPOSE(void, glLoadIdentity, (), (), )
PV_INTERPOSE(void, glLoadMatrixx, (const GLfixed* m), (m), .values(m, 16))
PV_INTERPOSE(void, glMultMatrixx, (const GLfixed* m), (m), .values(m, 16))
PV_INTERPOSE(void, glPushMatrix, (), (), )
PV_INTERPOSE(void, glPopMatrix, (), (), )
PV_INTERPOSE(void, glRotatex, (GLfixed angle, GLfixed x, GLfixed y, GLfixed z), (angle, x, y, z),
             .num(angle).num(x).num(y).num(z))
PV_INTERPOSE(void, glTranslatex, (GLfixed x, GLfixed y, GLfixed z), (x, y, z), .num(x).num(y).num(z))
PV_INTERPOSE(void, glFrustumx, (GLfixed l, GLfixed r, GLfixed b, GLfixed t, GLfixed n, GLfixed f),
             (l, r, b, t, n, f), .num(l).num(r).num(b).num(t).num(n).num(f))
PV_INTERPOSE(void, glOrthox, (GLfixed l, GLfixed r, GLfixed b, GLfixed t, GLfixed n, GLfixed f),
             (l, r, b, t, n, f), .num(l).num(r).num(b).num(t).num(n).num(f))

// Mesh normals (data pointers are left out).
PV_INTERPOSE(void, glNormalPointer, (GLenum type, GLsizei stride, const void* pointer),
             (type, stride, pointer), .en(type).num(stride))
// Interface drawing: quads as triangle strips.
PV_INTERPOSE(void, glDrawArrays, (GLenum mode, GLint first, GLsizei count), (mode, first, count),
             .raw(pvtest::primitiveText(mode)).num(first).num(count))

// Queries.
PV_INTERPOSE(void, glGetIntegerv, (GLenum pname, GLint* data), (pname, data), .en(pname))
PV_INTERPOSE(const GLubyte*, glGetString, (GLenum name), (name), .en(name))