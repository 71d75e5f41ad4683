/// \file
/// The engine's image resource: an RGB or RGBA picture kept as a bitmap in
/// system memory (bottom row first, R,G,B(,A) bytes) and, once uploaded, as a
/// GL texture charged to the engine's video-memory account. Pictures come
/// from TGA (uncompressed or run-length), PNG or JPEG files, or are created
/// empty. Every
/// texture is registered so that it can be found by name or id, swept by the
/// garbage collector and released at shut-down. The class also keeps the
/// texturing switch and the last bound texture per texture unit.
#ifndef PEVRANO_ASSETS_PVTEXTURE_H
#define PEVRANO_ASSETS_PVTEXTURE_H

#include <cstddef>

#include "core/pvregistry.h"

/// Size of a texture's file name, terminator included.
#define PV_TEXTURE_NAME_SIZE 256
/// Texture units are bookkeeping indices over the one GL texture target.
#define PV_TEXTURE_UNITS 16
/// Largest width and height a texture may have.
#define PV_TEXTURE_MAX_SIZE 256

/// A texture: a bitmap in system memory (TGA, PNG or JPEG, at most 256 x 256)
/// and its GL texture, charged to the video-memory budget. Textures register
/// themselves and are shared by reference count; PEVRANO::free deletes those
/// left.
class PVTEXTURE {
public:
    /// Creation and deletion (joins and leaves the registry, releases the GL
    /// texture and the bitmap); not copy-constructible.
    ///@{
    PVTEXTURE();
    ~PVTEXTURE();
    /// Copies every field as it stands (id, links and bitmap pointer too).
    PVTEXTURE& operator=(const PVTEXTURE&) = default;
    PVTEXTURE(const PVTEXTURE&) = delete;
    ///@}

    /// Deletes every registered texture; false (no log line) when there was none.
    static bool cleanUp();
    /// The registered texture of that file name, null if none.
    static PVTEXTURE* findByFilename(const char* name);
    /// The registered texture of that file name, else a new one read from the
    /// file (no GL call: its first render uploads it), its reference count
    /// untouched. Null, with nothing kept, when no texture has the name and
    /// the file cannot be read; loadedNow (optional) tells whether the file
    /// was read by this call.
    static PVTEXTURE* findOrLoad(const char* name, bool* loadedNow = nullptr);
    /// As findOrLoad, the caller then holding one reference on the texture,
    /// which it gives back with decReferences.
    static PVTEXTURE* acquire(const char* name, bool* loadedNow = nullptr);
    /// Registry: the texture with an id (null if none), the count, and the
    /// walk from the first.
    ///@{
    static PVTEXTURE* findById(unsigned int id);
    static unsigned int getNumberOfTextures();
    static PVTEXTURE* getFirst();
    PVTEXTURE* getNext();
    PVTEXTURE* getPrevious();
    ///@}
    /// Folder put before every file name load opens; null stores "".
    ///@{
    static void setPath(const char* path);
    static char* getPath();
    ///@}
    /// Bytes of bitmaps held in system memory.
    static int getUsedMemory();

    /// The file name of a texture made by create rather than read from a file.
    static constexpr const char* dynamicName = "[dynamic]";
    /// Registry id, file name and the frame stamp of the last bind.
    ///@{
    unsigned int getId();
    char* getFilename();
    long getTimeStamp();
    ///@}
    /// References held by boxes, fonts and materials: a texture with none is
    /// deleted by the garbage collector.
    ///@{
    int getReferences();
    void incReferences();
    void decReferences();
    ///@}
    /// The bitmap (owned by the texture, null once freed), its width, height
    /// and bytes, its format (3 RGB, 4 RGBA) and the GL texture name (0 when
    /// not resident).
    ///@{
    unsigned char* getBitmap();
    unsigned int getSizeX();
    unsigned int getSizeY();
    unsigned int getMemorySize();
    unsigned int getFormat();
    unsigned int getGLId();
    ///@}
    /// Resident in video memory.
    bool isLoaded();
    /// Filtering and wrapping: trilinear, mipmapped, clamped to the edge.
    ///@{
    bool isTrilinear();
    bool isMipmapped();
    bool isClamped();
    ///@}
    /// Cube-map face tag; stored, not used in drawing.
    ///@{
    void setCubeType(unsigned int type);
    unsigned int getCubeType();
    ///@}

    /// Reads a TGA, PNG or JPEG file (texture path + filename) into the
    /// bitmap; no GL call. False, the log naming the fault ("Unable to open
    /// file", "File corrupted", "Unsupported image format", a picture larger
    /// than 256 x 256, "Out of memory"), and the texture left as it was.
    bool load(const char* filename);
    /// Decodes a whole picture file held in memory, PNG or JPEG by their first
    /// bytes, else TGA; name is the one log lines show and the texture takes.
    bool loadImage(const unsigned char* data, size_t length, const char* name);
    /// Decodes a whole TGA file held in memory into the bitmap; name is the
    /// one log lines show and the texture takes.
    bool loadTGA(const unsigned char* data, size_t length, const char* name);
    /// Empty dynamic texture of format 3 (RGB), 4 (RGBA), 5 or 6 (no pixels), uploaded.
    /// False with "Invalid params" or "Out of memory".
    bool create(unsigned int newSizeX, unsigned int newSizeY, unsigned int newFormat);
    /// (Re)creates the GL texture from the bitmap, with mipmaps when asked;
    /// false with "Invalid params" without a bitmap.
    bool update();
    /// Replaces the GL texture's pixels, and the bitmap's with keepCopy.
    bool modify(const char* pixels, bool keepCopy);
    /// Makes a non-resident texture resident again.
    bool reload();
    /// Releases the GL texture and, with freeBitmap, the bitmap.
    bool unload(bool freeBitmap);
    /// Sets the filtering and wrapping; a resident texture is made again with
    /// them. Always true.
    bool setFilter(bool newTrilinear, bool newMipmapped, bool newClamped);
    /// Binds the texture; param points to an unsigned int unit (null: unit 0).
    bool render(void* param);

    /// Switches texturing on or off for a unit; unit 16 or more means every unit.
    ///@{
    static bool texturingOn(unsigned int unit);
    static bool texturingOff(unsigned int unit);
    ///@}
    /// Evicts textures until the used video memory is below limit, deletes
    /// the unreferenced ones and logs a report.
    static bool garbageCollect(unsigned long limit);

private:
    friend struct PVTESTACCESS;
    // A video writes its frames into its texture through bindForUpload.
    friend class PVVIDEO;

    void bindForUpload();
    /// False, with the invalid-parameter line, for a null name or one the
    /// filename field cannot hold whole.
    static bool acceptsName(const char* name);
    bool decodePixels(const unsigned char* data, size_t length, size_t pixels);
    bool flipRows(unsigned int width, unsigned int height);
    void buildMipmaps(unsigned int glFormat);
    void releaseBitmap();
    void releaseLoadedBitmap();
    void storeLoaded(unsigned int width, unsigned int height, const char* name);
    void releaseVideoMemory();
    static void logReport(PVTEXTURE** sorted, unsigned int count, unsigned long limit);

    unsigned int id;
    char filename[PV_TEXTURE_NAME_SIZE];
    long timeStamp;
    int references;
    unsigned char* bitmap;
    unsigned int sizeX;
    unsigned int sizeY;
    unsigned int memorySize;
    unsigned int format;
    unsigned int cubeType;
    unsigned int glId;
    bool trilinear;
    bool mipmapped;
    bool clamped;
    bool mipmapCharged;
    PVTEXTURE* previous;
    PVTEXTURE* next;

    static PVTEXTURE* firstTexture;
    static unsigned long usedMemory;
    static char texturePath[PV_TEXTURE_NAME_SIZE];
    static PVTEXTURE* channelCache[PV_TEXTURE_UNITS];
    static bool channelActive[PV_TEXTURE_UNITS];

    using Registry = PVREGISTRY<PVTEXTURE, &PVTEXTURE::firstTexture, &PVTEXTURE::previous, &PVTEXTURE::next>;
};

#endif
