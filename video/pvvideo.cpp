// Video texture: registry, file and decoder handling, the parse loop and the
// frame upload.
#include "video/pvvideo.h"

#include <algorithm>
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
#include "foundation/kvfstring.h"

namespace {
const size_t readPieceSize = 4096;
// libmpeg2 keeps at most three frame buffers (two references and one
// bidirectional picture).
const int trackedFrames = 3;
// Each copy libmpeg2 asks of the converter turns one macroblock row of the
// picture (or of the field) into RGB.
const unsigned int linesPerCopy = 16;
}  // namespace

// The picture last converted into one of libmpeg2's frame buffers: into
// which memory, in which size and layout, whether every line of it was
// converted, and whether its alpha is opaque already.
struct PVVIDEOFRAME {
    const mpeg2_fbuf_t* frame;
    uint8_t* pixels;
    unsigned int width;
    unsigned int height;
    unsigned int pixelBytes;
    unsigned int linesConverted;
    unsigned int linesNeeded;
    bool opaque;
};

// Everything a playing video needs from the decoder and the file, allocated
// apart from the video record.
struct PVVIDEODECODER {
    uint8_t buffer[readPieceSize];
    mpeg2dec_t* decoder;
    const mpeg2_info_t* info;
    mpeg2_state_t state;
    // Bytes the last read returned: -1 right after loading, 0 at the end of
    // the file (or on a read error).
    int lastRead;
    FILE* file;
    // Bytes per pixel the current sequence is converted to: 3 (RGB) or 4
    // (RGBA), after the texture set when the sequence began.
    unsigned int pixelBytes;
    // The frame buffers of the current sequence; forgotten when a new
    // sequence begins, as libmpeg2 then frees them.
    PVVIDEOFRAME frames[trackedFrames];
    unsigned int nextFrame;
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

// libmpeg2's 32-bit converter leaves the fourth byte of every pixel 0; the
// texture's alpha must say opaque. Two pixels at a time: the pass is a few
// percent of the decoding.
void makeOpaque(unsigned char* pixels, size_t count)
{
    const unsigned char alphaBytes[8] = {0, 0, 0, 0xFF, 0, 0, 0, 0xFF};
    uint64_t alpha;
    std::memcpy(&alpha, alphaBytes, sizeof(alpha));
    size_t i = 0;
    for (; i + 2 <= count; i += 2) {
        uint64_t pair;
        std::memcpy(&pair, pixels + 4 * i, sizeof(pair));
        pair |= alpha;
        std::memcpy(pixels + 4 * i, &pair, sizeof(pair));
    }
    if (i < count)
        pixels[4 * i + 3] = 0xFF;
}

using ConvertStart = void (*)(void*, const mpeg2_fbuf_t*, const mpeg2_picture_t*, const mpeg2_gop_t*);
using ConvertCopy = void (*)(void*, uint8_t* const*, unsigned int);

// libmpeg2's RGB converter, wrapped so that the video learns which lines of
// which frame buffer have been converted. The wrapper keeps this record at
// the start of the converter block libmpeg2 allocates; the wrapped
// converter's own block follows it.
struct alignas(16) ConverterRecord {
    PVVIDEODECODER* owner;
    ConvertStart innerStart;
    ConvertCopy innerCopy;
    unsigned int width;
    unsigned int height;
    unsigned int pixelBytes;
    PVVIDEOFRAME* current;
    // Whether the lines of the current picture get their alpha as they are
    // converted: RGBA frame pictures, whose lines are whole rows in order.
    bool alphaPerCopy;
};

void* innerBlock(void* block)
{
    return block ? static_cast<char*>(block) + sizeof(ConverterRecord) : nullptr;
}

PVVIDEOFRAME* frameRecordFor(PVVIDEODECODER* owner, const mpeg2_fbuf_t* frame)
{
    for (PVVIDEOFRAME& record : owner->frames)
        if (record.frame == frame)
            return &record;
    PVVIDEOFRAME* record = &owner->frames[owner->nextFrame];
    owner->nextFrame = (owner->nextFrame + 1) % trackedFrames;
    return record;
}

// A picture (or a field of one) begins in this frame buffer: none of its
// lines are converted yet.
void startPicture(void* block, const mpeg2_fbuf_t* frame, const mpeg2_picture_t* picture,
                  const mpeg2_gop_t* gop)
{
    ConverterRecord* record = static_cast<ConverterRecord*>(block);
    PVVIDEOFRAME* target = frameRecordFor(record->owner, frame);
    target->frame = frame;
    target->pixels = frame->buf[0];
    target->width = record->width;
    target->height = record->height;
    target->pixelBytes = record->pixelBytes;
    target->linesConverted = 0;
    target->linesNeeded = picture->nb_fields == 1 ? record->height / 2 : record->height;
    record->alphaPerCopy = record->pixelBytes == 4 && picture->nb_fields != 1;
    target->opaque = record->pixelBytes != 4 || record->alphaPerCopy;
    record->current = target;
    if (record->innerStart)
        record->innerStart(innerBlock(block), frame, picture, gop);
}

void copyLines(void* block, uint8_t* const* source, unsigned int lineOffset)
{
    ConverterRecord* record = static_cast<ConverterRecord*>(block);
    record->innerCopy(innerBlock(block), source, lineOffset);
    PVVIDEOFRAME* target = record->current;
    if (!target)
        return;
    target->linesConverted += linesPerCopy;
    // The rows just converted are still in the cache: their alpha costs
    // little now.
    if (record->alphaPerCopy && lineOffset < target->height) {
        const unsigned int rows = std::min(linesPerCopy, target->height - lineOffset);
        makeOpaque(target->pixels + size_t(lineOffset) * target->width * 4, size_t(rows) * target->width);
    }
}

// The converter handed to libmpeg2: 24-bit RGB, or 32-bit with the bytes in
// R, G, B, A order for an RGBA texture, with the wrapper's record in front.
int trackingConverter(int stage, void* block, const mpeg2_sequence_t* sequence, int stride, uint32_t accel,
                      void* owner, mpeg2_convert_init_t* result)
{
    PVVIDEODECODER* decoder = static_cast<PVVIDEODECODER*>(owner);
    mpeg2_convert_t* inner = decoder->pixelBytes == 4 ? mpeg2convert_bgr32 : mpeg2convert_rgb24;
    const int answer = inner(stage, innerBlock(block), sequence, stride, accel, nullptr, result);
    if (!result)
        return answer;
    result->id_size += sizeof(ConverterRecord);
    if (stage == MPEG2_CONVERT_START && block) {
        ConverterRecord* record = static_cast<ConverterRecord*>(block);
        record->owner = decoder;
        record->innerStart = result->start;
        record->innerCopy = result->copy;
        record->width = sequence->width;
        record->height = sequence->height;
        record->pixelBytes = decoder->pixelBytes;
        record->current = nullptr;
        result->start = startPicture;
        result->copy = copyLines;
    }
    return answer;
}

// The video path followed by a name that fits the video's field: both
// together always fit twice that field.
const char* pathOf(const char* file, char (&path)[2 * PV_VIDEO_NAME_SIZE])
{
    std::snprintf(path, sizeof(path), "%s%s", PVVIDEO::getMPGPath(), file);
    return path;
}

// Whether the path names anything at all: a directory passes here and is
// refused when it is opened for reading.
bool pathExists(const char* path)
{
    struct stat status;
    return stat(path, &status) == 0;
}

}  // namespace

PVVIDEO::PVVIDEO() :
    id(kvfNewId()),
    texture(nullptr),
    textureId(0),
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
    releaseTexture();
    kvfReleaseId(id);
    kvfFree(decoder);
    Registry::remove(this);
}

bool PVVIDEO::cleanUp()
{
    if (!firstVideo)
        return false;
    kvfLog("   %d video(s) released\n", Registry::deleteAll());
    return true;
}

unsigned int PVVIDEO::getNumberOfVideos() { return Registry::count(); }

PVVIDEO* PVVIDEO::findByFilename(const char* name) { return Registry::findByText(&PVVIDEO::filename, name); }

PVVIDEO* PVVIDEO::findById(unsigned int wantedId) { return Registry::findByValue(&PVVIDEO::id, wantedId); }

void PVVIDEO::setMPGPath(const char* path)
{
    if (!kvfCopyIfFits(mpgPath, sizeof(mpgPath), path ? path : ""))
        kvfLog("   [!] Invalid params @ PVVIDEO::setMPGPath\n");
}

char* PVVIDEO::getMPGPath() { return mpgPath; }

void PVVIDEO::setTexture(PVTEXTURE* target)
{
    if (target == texture)
        return;
    if (target)
        target->incReferences();
    releaseTexture();
    texture = target;
    textureId = target ? target->getId() : 0;
}

void PVVIDEO::releaseTexture()
{
    if (texture && PVTEXTURE::findById(textureId) == texture)
        texture->decReferences();
    texture = nullptr;
    textureId = 0;
}

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
    forgetFrames();
}

bool PVVIDEO::load(const char* file)
{
    if (isOpen()) {
        closeStream();
        status = PV_VIDEO_STOP;
    }
    // A name longer than the video's own field is refused here: cut, it
    // would name another file when the video reopens it.
    char path[2 * PV_VIDEO_NAME_SIZE];
    const bool nameFits = file && strnlen(file, sizeof(filename)) < sizeof(filename);
    if (!nameFits || !pathExists(pathOf(file, path))) {
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
    decoder->lastRead = -1;
    kvfCopyIfFits(filename, sizeof(filename), file);
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
    switch (decoder->state) {
    case STATE_BUFFER:
        readNextPiece();
        break;
    case STATE_SEQUENCE:
        startSequence();
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

// A new sequence: its pictures are converted to the layout of the texture set
// now (RGBA for an RGBA texture, RGB otherwise). The frame buffers of the
// sequence before are freed by libmpeg2 and forgotten here.
void PVVIDEO::startSequence()
{
    decoder->pixelBytes = texture && texture->getFormat() == 4 ? 4 : 3;
    forgetFrames();
    mpeg2_convert(decoder->decoder, trackingConverter, decoder);
}

void PVVIDEO::forgetFrames()
{
    std::memset(decoder->frames, 0, sizeof(decoder->frames));
    decoder->nextFrame = 0;
}

// The picture libmpeg2 offers for display, when every line of it was
// converted into the frame buffer it still holds; null otherwise (a picture
// whose slices were lost, or a buffer of an earlier sequence).
const PVVIDEOFRAME* PVVIDEO::displayedPicture() const
{
    const mpeg2_fbuf_t* frame = decoder->info->display_fbuf;
    if (!frame)
        return nullptr;
    for (const PVVIDEOFRAME& record : decoder->frames)
        if (record.frame == frame)
            return record.pixels == frame->buf[0] && record.linesConverted >= record.linesNeeded ? &record
                                                                                                 : nullptr;
    return nullptr;
}

// The picture replaces the texture's top-left corner, its first row at
// texture row 0. A texture that is not resident, not in the layout the
// picture was converted to or smaller than the picture is left alone, so
// that GL never sees an invalid upload.
void PVVIDEO::uploadFrame()
{
    const PVVIDEOFRAME* picture = texture ? displayedPicture() : nullptr;
    const bool fits = picture && texture->isLoaded() && texture->getFormat() == picture->pixelBytes &&
                      picture->width <= texture->getSizeX() && picture->height <= texture->getSizeY();
    if (!fits)
        return;
    const bool rgba = picture->pixelBytes == 4;
    if (!picture->opaque)
        makeOpaque(picture->pixels, size_t(picture->width) * picture->height);
    texture->bindForUpload();
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, GLsizei(picture->width), GLsizei(picture->height),
                    rgba ? GL_RGBA : GL_RGB, GL_UNSIGNED_BYTE, picture->pixels);
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
