// The emitter's description reader: XML text (a file or memory) checked value
// by value into a PVEMITTERDEF, refused whole at the first bad element.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include <tinyxml.h>

#include "assets/pvemitter.h"
#include "foundation/kvffile.h"
#include "foundation/kvflog.h"
#include "foundation/kvfstring.h"
#include "gui/pvxmlscan.h"

namespace {

// Upper bounds of description values, far beyond any sensible effect.
const float largestValue = 1.0e6f;

// Reads one emitter description, checking every value; the first bad element
// is kept for the log line.
class DescriptionReader {
public:
    explicit DescriptionReader(PVEMITTERDEF& target) : def(target), bad(nullptr) {}

    // False with badElement() set when a value is missing its form or range.
    bool read(const TiXmlElement* root)
    {
        readRoot(root);
        for (const TiXmlElement* e = root->FirstChildElement(); e && !bad; e = e->NextSiblingElement())
            readChild(e);
        if (!bad && def.lifeMax < def.lifeMin)
            bad = "life";
        if (!bad && def.speedMax < def.speedMin)
            bad = "velocity";
        std::sort(def.bursts, def.bursts + def.numberOfBursts,
                  [](const PVBURST& a, const PVBURST& b) { return a.time < b.time; });
        return !bad;
    }
    const char* badElement() const { return bad; }

private:
    void readRoot(const TiXmlElement* e)
    {
        readInt(e, "particles", def.maxParticles, 1, PV_EMITTER_MAX_POOL);
        int seed = int(def.seed);
        readInt(e, "seed", seed, 0, 0x7fffffff);
        def.seed = uint32_t(seed);
        const char* blending = e->Attribute("blending");
        if (blending && !std::strcmp(blending, "additive"))
            def.blending = PV_EMITTER_ADDITIVE;
        else if (blending && !std::strcmp(blending, "alpha"))
            def.blending = PV_EMITTER_ALPHA;
        else if (blending)
            fail(e);
    }

    void readChild(const TiXmlElement* e)
    {
        const std::string& name = e->ValueStr();
        if (name == "texture")
            readTexture(e);
        else if (name == "emission")
            readEmission(e);
        else if (name == "life")
            readRange(e, def.lifeMin, def.lifeMax);
        else if (name == "velocity")
            readVelocity(e);
        else if (name == "acceleration")
            readVector(e, def.acceleration, -largestValue);
        else if (name == "area")
            readVector(e, def.area, 0.0f);
        else if (name == "birth")
            readEnd(e, def.colorBirth, def.sizeBirth);
        else if (name == "death")
            readEnd(e, def.colorDeath, def.sizeDeath);
        else
            fail(e);
    }

    void readTexture(const TiXmlElement* e)
    {
        const char* file = e->Attribute("file");
        if (!kvfCopyIfFits(def.texture, sizeof def.texture, file))
            fail(e);
    }

    void readEmission(const TiXmlElement* e)
    {
        readFloat(e, "rate", def.rate, 0.0f, largestValue);
        readFloat(e, "duration", def.duration, 0.0f, largestValue);
        readBool(e, "loop", def.looping);
        def.numberOfBursts = 0;
        for (const TiXmlElement* b = e->FirstChildElement(); b && !bad; b = b->NextSiblingElement()) {
            if (b->ValueStr() != "burst" || def.numberOfBursts == PV_EMITTER_MAX_BURSTS)
                return fail(b);
            PVBURST& burst = def.bursts[def.numberOfBursts++];
            burst.time = 0.0f;
            burst.count = 0;
            readFloat(b, "time", burst.time, 0.0f, largestValue);
            readInt(b, "count", burst.count, 0, PV_EMITTER_MAX_POOL);
            // A cycle ends at its duration: a burst at or after it never fires.
            if (def.duration > 0.0f && burst.time >= def.duration)
                fail(b);
        }
    }

    void readRange(const TiXmlElement* e, float& low, float& high)
    {
        readFloat(e, "min", low, 1.0e-3f, largestValue);
        readFloat(e, "max", high, 1.0e-3f, largestValue);
    }

    void readVelocity(const TiXmlElement* e)
    {
        K3MVECTOR3D direction = def.direction;
        readVector(e, direction, -largestValue);
        const float length = std::sqrt(direction % direction);
        if (!(length > 1.0e-6f))
            return fail(e);
        def.direction = direction / length;
        readFloat(e, "speedMin", def.speedMin, -largestValue, largestValue);
        readFloat(e, "speedMax", def.speedMax, -largestValue, largestValue);
        readFloat(e, "spread", def.spread, 0.0f, 180.0f);
    }

    void readEnd(const TiXmlElement* e, K3MVECTOR4D& colour, float& size)
    {
        readFloat(e, "r", colour.x, 0.0f, 1.0f);
        readFloat(e, "g", colour.y, 0.0f, 1.0f);
        readFloat(e, "b", colour.z, 0.0f, 1.0f);
        readFloat(e, "a", colour.w, 0.0f, 1.0f);
        readFloat(e, "size", size, 0.0f, largestValue);
    }

    void readVector(const TiXmlElement* e, K3MVECTOR3D& v, float low)
    {
        readFloat(e, "x", v.x, low, largestValue);
        readFloat(e, "y", v.y, low, largestValue);
        readFloat(e, "z", v.z, low, largestValue);
    }

    // An absent attribute keeps the value it had.
    void readFloat(const TiXmlElement* e, const char* attribute, float& value, float low, float high)
    {
        double read = 0.0;
        const int result = e->QueryDoubleAttribute(attribute, &read);
        if (result == TIXML_NO_ATTRIBUTE)
            return;
        if (result != TIXML_SUCCESS || !(read >= low && read <= high))
            return fail(e);
        value = float(read);
    }

    void readInt(const TiXmlElement* e, const char* attribute, int& value, int low, int high)
    {
        double read = 0.0;
        const int result = e->QueryDoubleAttribute(attribute, &read);
        if (result == TIXML_NO_ATTRIBUTE)
            return;
        if (result != TIXML_SUCCESS || !(read >= low && read <= high) || read != std::floor(read))
            return fail(e);
        value = int(read);
    }

    void readBool(const TiXmlElement* e, const char* attribute, bool& value)
    {
        const char* text = e->Attribute(attribute);
        if (!text)
            return;
        if (!std::strcmp(text, "true") || !std::strcmp(text, "1"))
            value = true;
        else if (!std::strcmp(text, "false") || !std::strcmp(text, "0"))
            value = false;
        else
            fail(e);
    }

    void fail(const TiXmlElement* e)
    {
        if (!bad)
            bad = e->Value();
    }

    PVEMITTERDEF& def;
    const char* bad;
};

// Reads the description under the <emitter> root of a parsed document into
// out, which holds the defaults; false after a log line.
bool readDocument(const TiXmlDocument& document, const char* source, PVEMITTERDEF& out)
{
    if (document.Error()) {
        kvfLog("   [!] Malformed XML in %s (line %d) @ PVEMITTER::load\n", source, document.ErrorRow());
        return false;
    }
    const TiXmlElement* root = document.RootElement();
    if (!root || root->ValueStr() != "emitter") {
        kvfLog("   [!] No emitter element in %s @ PVEMITTER::load\n", source);
        return false;
    }
    DescriptionReader reader(out);
    if (!reader.read(root)) {
        kvfLog("   [!] Invalid <%s> in %s @ PVEMITTER::load\n", reader.badElement(), source);
        return false;
    }
    return true;
}

}  // namespace

bool PVEMITTER::load(const char* file)
{
    if (!file) {
        kvfLog("   [!] Invalid params @ PVEMITTER::load\n");
        return false;
    }
    if (!kvfFileExists(file)) {
        kvfLog("   [!] Unable to open %s @ PVEMITTER::load\n", file);
        return false;
    }
    std::string text;
    TiXmlDocument document;
    if (pvXmlReadFile(file, &text))
        pvXmlParse(text, &document);
    else
        document.Parse("");  // unreadable or over 16 MB: reported as malformed
    PVEMITTERDEF loaded = defaultDefinition();
    return readDocument(document, file, loaded) && applyDefinition(loaded, file);
}

bool PVEMITTER::loadFromText(const char* text, const char* source)
{
    if (!text || !source) {
        kvfLog("   [!] Invalid params @ PVEMITTER::load\n");
        return false;
    }
    TiXmlDocument document;
    pvXmlParse(text, &document);
    PVEMITTERDEF loaded = defaultDefinition();
    return readDocument(document, source, loaded) && applyDefinition(loaded, source);
}
