/// \file
/// Video texture: plays an MPEG-1/2 video file into an existing texture. Each
/// update runs a number of decoder steps, reading the file in 4096-byte pieces;
/// every whole decoded picture is converted to the texture's layout (24-bit
/// RGB, or RGBA for an RGBA texture) and replaces its top-left corner. There
/// is no audio and no clock: the application chooses how many steps to run
/// per frame.
#ifndef PEVRANO_VIDEO_PVVIDEO_H
#define PEVRANO_VIDEO_PVVIDEO_H

#include "core/pvregistry.h"

/// Size of a video's file name, terminator included.
#define PV_VIDEO_NAME_SIZE 256

class PVTEXTURE;
struct PVVIDEODECODER;
struct PVVIDEOFRAME;

/// What update does: nothing, play to the end, play in a loop, or (once the
/// file has been read to its end) reopen it from the start.
enum PV_VIDEO_STATUS {
    PV_VIDEO_STOP = 0,
    PV_VIDEO_PLAY = 1,
    PV_VIDEO_LOOP = 2,
    PV_VIDEO_REWIND = 3,
};

/// An MPEG-1/2 video stream decoded into a texture, a number of decoder steps
/// per update. Videos register themselves; PEVRANO::free deletes those left.
class PVVIDEO {
public:
    /// A stopped video with nothing loaded.
    PVVIDEO();
    /// Closes the file and decoder still open, then leaves the registry.
    ~PVVIDEO();
    PVVIDEO(const PVVIDEO&) = delete;
    /// Copies the whole record as it stands: links and decoder block included.
    PVVIDEO& operator=(const PVVIDEO&) = default;

    /// Deletes every registered video and logs how many; false (and no line)
    /// when there was none.
    static bool cleanUp();
    /// Registry: the count, and the video with an id (null if none).
    ///@{
    static unsigned int getNumberOfVideos();
    /// First video loaded from this name (as given to load); null for null.
    static PVVIDEO* findByFilename(const char* name);
    static PVVIDEO* findById(unsigned int wantedId);
    ///@}
    /// Folder put before every name that load opens (null sets ""); a path
    /// longer than 255 characters is refused and the old one kept.
    ///@{
    static void setMPGPath(const char* path);
    static char* getMPGPath();
    ///@}

    /// Opens the file (after the path prefix) and a decoder; the video stops.
    /// False with "Invalid params or file not found" (a name longer than 255
    /// characters included), "Unable to open file" or "Decoder failed to
    /// initialize".
    bool load(const char* file);
    /// Runs the decoder for this many steps; false when stopped or not loaded.
    bool update(unsigned int steps);

    /// The texture pictures are uploaded into. The video holds a reference
    /// on it (so the garbage collector keeps it) until another is set or the
    /// video is deleted.
    ///@{
    void setTexture(PVTEXTURE* target);
    PVTEXTURE* getTexture() { return texture; }
    ///@}
    /// Set what update does next (PV_VIDEO_STATUS), and read it.
    ///@{
    void play() { status = PV_VIDEO_PLAY; }
    void stop() { status = PV_VIDEO_STOP; }
    void playLoop() { status = PV_VIDEO_LOOP; }
    void rewind() { status = PV_VIDEO_REWIND; }
    PV_VIDEO_STATUS getStatus() { return status; }
    ///@}
    /// Registry id and the file name given to load.
    ///@{
    unsigned int getId() { return id; }
    char* getFilename() { return filename; }
    ///@}

private:
    friend struct PVTESTACCESS;

    void releaseTexture();
    bool isOpen() const;
    void closeStream();
    void parseStep();
    void readNextPiece();
    void startSequence();
    void forgetFrames();
    const PVVIDEOFRAME* displayedPicture() const;
    void uploadFrame();
    bool restartAtEnd();

    unsigned int id;
    char filename[PV_VIDEO_NAME_SIZE];
    PVTEXTURE* texture;
    // The texture's id, to tell whether it still exists: textures are
    // released before videos when the engine shuts down.
    unsigned int textureId;
    PVVIDEO* previous;
    PVVIDEO* next;
    PV_VIDEO_STATUS status;
    PVVIDEODECODER* decoder;

    static PVVIDEO* firstVideo;
    static char mpgPath[PV_VIDEO_NAME_SIZE];

    using Registry = PVREGISTRY<PVVIDEO, &PVVIDEO::firstVideo, &PVVIDEO::previous, &PVVIDEO::next>;
};

#endif
