/// \file
/// Off-screen render target. On the fixed-function GL profile a frame buffer
/// only remembers its texture or size and sets the viewport when it becomes
/// current (and only where frame buffers are supported at all).
#ifndef PEVRANO_ASSETS_PVFBO_H
#define PEVRANO_ASSETS_PVFBO_H

#include "core/pvregistry.h"

/// Size of a frame buffer name, terminator included.
#define PV_FBO_NAME_SIZE 256

class PVTEXTURE;
class PVSHADER;

/// An off-screen frame buffer. This GL profile has none: the calls that
/// need one return false or do nothing. Frame buffers register themselves;
/// PEVRANO::free deletes those left.
class PVFBO {
public:
    /// Creation and deletion (joins and leaves the registry); not copyable.
    ///@{
    PVFBO();
    ~PVFBO();
    PVFBO(const PVFBO&) = delete;
    PVFBO& operator=(const PVFBO&) = delete;
    ///@}

    /// Deletes every registered frame buffer; false when there was none.
    static bool cleanUp();
    /// Number of registered frame buffers.
    static unsigned int getNumberOfFbos();

    /// Whether frame buffers are available (never in this profile).
    bool isOk();
    /// Renders into texture (not owned); false with "Invalid params" for null,
    /// and false without frame-buffer support.
    bool bindTexture(int attachment, PVTEXTURE* texture);
    /// Gives the frame buffer a size; false without frame-buffer support.
    bool bindRenderBuffer(int attachment, int sizeX, int sizeY);
    /// Makes this frame buffer current, setting the viewport to its size.
    bool render(void* param);
    /// Forgets the current frame buffer; the viewport is not restored.
    static void unbind();
    /// Post-processing passes; they do nothing here and return true.
    ///@{
    bool blur(PVFBO* target, PVSHADER* shader, int passes);
    bool computeLuminance(float* luminance);
    ///@}

    /// The bound texture (null for none), the size, the registry id and the name.
    ///@{
    PVTEXTURE* getTexture();
    int getSizeX();
    int getSizeY();
    unsigned int getId();
    char* getName();
    ///@}

private:
    friend struct PVTESTACCESS;

    unsigned int id;
    char name[PV_FBO_NAME_SIZE];
    PVFBO* previous;
    PVFBO* next;
    PVTEXTURE* texture;
    int sizeX;
    int sizeY;
    unsigned int frameBufferHandle;
    unsigned int renderBufferHandle;

    static PVFBO* firstFbo;
    static PVFBO* currentFbo;
    static int viewport[4];

    using Registry = PVREGISTRY<PVFBO, &PVFBO::firstFbo, &PVFBO::previous, &PVFBO::next>;
};

#endif
