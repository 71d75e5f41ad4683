// Video texture: registry, file and decoder handling, the parse loop and the
// frame upload.
#include "video/pvvideo.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include <GLES/gl.h>
#include <sys/stat.h>

extern "C" {
#include <mpeg2dec/mpeg2.h>
#include <mpeg2dec/mpeg2convert.h>
}

#include "assets/pvtexture.h"
#include "foundation/kvffile.h"
#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"

namespace {
const size_t readPieceSize = 4096;
}

// Everything a playing video needs from the decoder and the file, allocated
// apart from the video record.
struct PVVIDEODECODER {
    uint8_t buffer[readPieceSize];
    mpeg2dec_t* decoder;
    const mpeg2_info_t* info;
    const mpeg2_sequence_t* sequence;
    mpeg2_state_t state;
    // Bytes the last read returned: -1 right after loading, 0 at the end of
    // the file (or on a read error).
    int lastRead;
    FILE* file;
};

PVVIDEO* PVVIDEO::firstVideo = nullptr;
char PVVIDEO::mpgPath[PV_VIDEO_NAME_SIZE] = "";

namespace {

PVVIDEODECODER* newDecoderBlock()
{
    void* block = kvfMalloc(sizeof(PVVIDEODECODER));
    if (block)
        std::memset(block, 0, sizeof(PVVIDEODECODER));
    return static_cast<PVVIDEODECODER*>(block);
}

// Whether the path names anything at all: a directory passes here and is
// refused when it is opened for reading.
bool pathExists(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0;
}

// Copies text into a fixed field, cut to fit; source and field may overlap.
void copyName(char (&field)[PV_VIDEO_NAME_SIZE], const char* text)
{
    std::memmove(field, text, strnlen(text, PV_VIDEO_NAME_SIZE - 1));
    field[strnlen(text, PV_VIDEO_NAME_SIZE - 1)] = '\0';
}

}  // namespace

PVVIDEO::PVVIDEO() :
    id(kvfNewId()),
    texture(nullptr),
    previous(nullptr),
    next(nullptr),
    status(PV_VIDEO_STOP),
    decoder(newDecoderBlock())
{
    std::snprintf(filename, sizeof(filename), "[video %d]", id);
    Registry::append(this);
}

PVVIDEO::~PVVIDEO()
{
    // The stream is closed here too, so that a deleted video leaks no file
    // handle or decoder.
    closeStream();
    kvfReleaseId(id);
    kvfFree(decoder);
    Registry::remove(this);
}

bool PVVIDEO::cleanUp()
{
    if (!firstVideo)
        return false;
    Registry::deleteAll();
    return true;
}

unsigned int PVVIDEO::getNumberOfVideos() { return Registry::count(); }

PVVIDEO* PVVIDEO::findByFilename(const char* name) { return Registry::findByText(&PVVIDEO::filename, name); }

PVVIDEO* PVVIDEO::findById(unsigned int wantedId) { return Registry::findByValue(&PVVIDEO::id, wantedId); }

void PVVIDEO::setMPGPath(const char* path) { copyName(mpgPath, path ? path : ""); }

char* PVVIDEO::getMPGPath() { return mpgPath; }

bool PVVIDEO::isOpen() const { return decoder && decoder->file; }

void PVVIDEO::closeStream()
{
    if (!isOpen())
        return;
    std::fclose(decoder->file);
    decoder->file = nullptr;
    mpeg2_close(decoder->decoder);
    decoder->decoder = nullptr;
    decoder->info = nullptr;
    decoder->sequence = nullptr;
}

bool PVVIDEO::load(const char* file)
{
    if (isOpen()) {
        closeStream();
        status = PV_VIDEO_STOP;
    }
    char path[2 * PV_VIDEO_NAME_SIZE];
    const bool pathFits =
        file && std::snprintf(path, sizeof(path), "%s%s", mpgPath, file) < int(sizeof(path));
    if (!pathFits || !pathExists(path)) {
        kvfLog("   [!] Invalid params or file not found @ PVVIDEO::load\n");
        return false;
    }
    kvfLog("\n   Loading MPG file '%s'...\n", file);
    FILE* stream = kvfOpenReadable(path);
    if (!stream) {
        kvfLog("   [!] Unable to open file %s @ PVVISIO::load\n", file);
        return false;
    }
    mpeg2dec_t* handle = decoder ? mpeg2_init() : nullptr;
    if (!handle) {
        kvfLog("   [!] Decoder failed to initialize @ PVVIDEO::load\n");
        std::fclose(stream);
        return false;
    }
    decoder->file = stream;
    decoder->decoder = handle;
    decoder->info = mpeg2_info(handle);
    decoder->sequence = nullptr;
    decoder->lastRead = -1;
    copyName(filename, file);
    status = PV_VIDEO_STOP;
    return true;
}

bool PVVIDEO::update(unsigned int steps)
{
    // A rewind acts only once the last read found the file empty; until then
    // it decodes like play.
    if (status == PV_VIDEO_REWIND && decoder && decoder->lastRead == 0) {
        closeStream();
        return load(filename);
    }
    if (status == PV_VIDEO_STOP || !isOpen())
        return false;
    for (unsigned int step = 0; step < steps; step++) {
        parseStep();
        if (decoder->lastRead == 0 && !restartAtEnd())
            return false;
    }
    return true;
}

void PVVIDEO::parseStep()
{
    decoder->state = mpeg2_parse(decoder->decoder);
    decoder->sequence = decoder->info->sequence;
    switch (decoder->state) {
    case STATE_BUFFER:
        readNextPiece();
        break;
    case STATE_SEQUENCE:
        mpeg2_convert(decoder->decoder, mpeg2convert_rgb24, nullptr);
        break;
    case STATE_SLICE:
    case STATE_END:
    case STATE_INVALID_END:
        uploadFrame();
        break;
    default:
        break;
    }
}

void PVVIDEO::readNextPiece()
{
    const size_t count = std::fread(decoder->buffer, 1, readPieceSize, decoder->file);
    decoder->lastRead = int(count);
    mpeg2_buffer(decoder->decoder, decoder->buffer, decoder->buffer + count);
}

// The picture replaces the texture's top-left corner, its first row at
// texture row 0. A texture that is not resident, not RGB or smaller than the
// picture is left alone, so that GL never sees an invalid upload.
void PVVIDEO::uploadFrame()
{
    const mpeg2_fbuf_t* frame = decoder->info->display_fbuf;
    const mpeg2_sequence_t* sequence = decoder->sequence;
    if (!frame || !texture || !sequence)
        return;
    const bool fits = texture->isLoaded() && texture->getFormat() == 3 &&
                      sequence->width <= texture->getSizeX() && sequence->height <= texture->getSizeY();
    if (!fits)
        return;
    texture->bindForUpload();
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, GLsizei(sequence->width), GLsizei(sequence->height), GL_RGB,
                    GL_UNSIGNED_BYTE, frame->buf[0]);
}

// End of the file: the same file is opened again from its start. A looping
// video goes on looping; any other stops. False when the file cannot be
// opened again (the video is then closed).
bool PVVIDEO::restartAtEnd()
{
    const PV_VIDEO_STATUS before = status;
    closeStream();
    if (!load(filename))
        return false;
    if (before == PV_VIDEO_LOOP)
        status = PV_VIDEO_LOOP;
    return true;
}
