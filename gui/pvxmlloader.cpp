// Interfaces from XML description files: PEVRANO::loadXML reads the document
// and builds the widget tree, one element at a time through recursiveLoadXML.
#include <cstdio>
#include <cstring>
#include <string>
#include <typeinfo>

#include <tinyxml.h>

#include "assets/pvtexture.h"
#include "core/pevrano.h"
#include "foundation/kvflog.h"
#include "gui/pvbutton.h"
#include "gui/pvfont.h"
#include "gui/pvhscrollbar.h"
#include "gui/pvlabel.h"
#include "gui/pvtextfield.h"
#include "gui/pvvscrollbar.h"
#include "gui/pvwindow.h"
#include "gui/pvxmlscan.h"

namespace {

struct WidgetKind {
    const char* element;
    const char* message;
    PVNODE* (*create)();
};

template <typename Widget> PVNODE* createWidget() { return new Widget(); }

const WidgetKind widgetKinds[] = {
    {"window", "   + create a window\n", createWidget<PVWINDOW>},
    {"button", "   + create a button\n", createWidget<PVBUTTON>},
    {"text", "   + create a textfield\n", createWidget<PVTEXTFIELD>},
    {"label", "   + create a label\n", createWidget<PVLABEL>},
    {"box", "   + create a box\n", createWidget<PVBOX>},
    {"vslider", "   + create a vertical slider\n", createWidget<PVVSCROLLBAR>},
    {"hslider", "   + create a horizontal slider\n", createWidget<PVHSCROLLBAR>},
};

const char* const buttonKinds[] = {"normal", "inverted", "switch"};

// The texture already loaded from file, or a new one read from it (null when
// it cannot be read); a new font texture is neither filtered nor mipmapped.
PVTEXTURE* sharedTexture(const char* file, bool forFont)
{
    bool loadedNow = false;
    PVTEXTURE* texture = PVTEXTURE::findOrLoad(file, &loadedNow);
    if (texture && forFont && loadedNow)
        texture->setFilter(false, false, false);
    return texture;
}

bool applyFontProperty(PVFONT* font, const TiXmlElement* property)
{
    const std::string name = property->ValueStr();
    const char* value = property->Attribute("value");
    if (name == "name") {
        if (value)
            font->setName(value);
    } else if (name == "texture") {
        PVTEXTURE* texture = value ? sharedTexture(value, true) : nullptr;
        if (texture)
            font->setTexture(texture);
    } else if (name == "kerning") {
        if (value)
            font->loadKerning(value);
    } else {
        return false;
    }
    return true;
}

void applyFont(PVNODE* target, PVFONT* font)
{
    if (PVWINDOW* window = dynamic_cast<PVWINDOW*>(target))
        window->setFont(font);
    else if (PVBUTTON* button = dynamic_cast<PVBUTTON*>(target))
        button->setFont(font);
    else if (PVLABEL* label = dynamic_cast<PVLABEL*>(target))
        label->setFont(font);
}

void applyText(PVNODE* target, const char* text)
{
    if (PVLABEL* label = dynamic_cast<PVLABEL*>(target)) {
        label->write("%s", text);
    } else if (PVWINDOW* window = dynamic_cast<PVWINDOW*>(target)) {
        window->clear();
        window->write("%s", text);
        window->format();
    }
}

void applyCaption(PVNODE* target, const char* text)
{
    if (PVWINDOW* window = dynamic_cast<PVWINDOW*>(target))
        window->setCaption(text);
    else if (PVBUTTON* button = dynamic_cast<PVBUTTON*>(target))
        button->setCaption(text);
}

void applySizes(PVNODE* target, int width, int height)
{
    if (PVWINDOW* window = dynamic_cast<PVWINDOW*>(target))
        window->setSizes(width, height);
    else if (PVBOX* box = dynamic_cast<PVBOX*>(target))
        box->setSizes(width, height);
}

void applyColor(PVNODE* target, const TiXmlElement* property)
{
    PVBOX* box = dynamic_cast<PVBOX*>(target);
    const char* channels[4] = {property->Attribute("r"), property->Attribute("g"), property->Attribute("b"),
                               property->Attribute("a")};
    float values[4] = {0.0f, 0.0f, 0.0f, 0.0f};
    for (int i = 0; i < 4; i++) {
        if (!channels[i])
            return;
        sscanf(channels[i], "%f", &values[i]);
    }
    if (box)
        box->setColor(values[0], values[1], values[2], values[3]);
}

void applyKind(PVNODE* target, const char* kind)
{
    // Plain buttons only: windows and text fields keep their own event type.
    if (!kind || !target || typeid(*target) != typeid(PVBUTTON))
        return;
    for (int i = 0; i < 3; i++)
        if (strcmp(kind, buttonKinds[i]) == 0)
            static_cast<PVBUTTON*>(target)->setEventType(PV_BUTTON_EVENT(i));
}

// One property element applied to target; missing attributes and properties
// that do not suit the target's type are skipped.
void applyProperty(PVNODE* target, const TiXmlElement* property)
{
    const std::string name = property->ValueStr();
    const char* value = property->Attribute("value");
    int a = 0;
    int b = 0;
    if (name == "name") {
        if (value)
            target->setName(value);
    } else if (name == "title") {
        if (value)
            applyCaption(target, value);
    } else if (name == "position") {
        if (property->QueryIntAttribute("x", &a) == TIXML_SUCCESS &&
            property->QueryIntAttribute("y", &b) == TIXML_SUCCESS)
            target->setPosition(float(a), float(b));
    } else if (name == "size") {
        if (property->QueryIntAttribute("width", &a) == TIXML_SUCCESS &&
            property->QueryIntAttribute("height", &b) == TIXML_SUCCESS)
            applySizes(target, a, b);
    } else if (name == "usefont") {
        const char* reference = property->Attribute("ref");
        if (reference)
            applyFont(target, PVFONT::findByName(reference));
    } else if (name == "texture") {
        PVBOX* box = dynamic_cast<PVBOX*>(target);
        PVTEXTURE* texture = box && value ? sharedTexture(value, false) : nullptr;
        if (texture)
            box->setTexture(texture);
    } else if (name == "write") {
        if (value)
            applyText(target, value);
    } else if (name == "color") {
        applyColor(target, property);
    } else if (name == "kind") {
        applyKind(target, value);
    }
}

}  // namespace

PVNODE* PEVRANO::loadXML(const char* file)
{
    std::string text;
    TiXmlDocument document;
    if (!file || !pvXmlReadFile(file, &text) || !pvXmlParse(text, &document)) {
        kvfLog("   [!] Unable to open file %s @ PEVRANO::loadXML\n", file ? file : "(null)");
        return nullptr;
    }
    kvfLog("\n   Loading XML file '%s'...\n", file);
    TiXmlElement* root = document.FirstChildElement("root");
    if (!root) {
        kvfLog("   [!] Root not found in file %s @ PEVRANO::loadXML\n", file);
        return nullptr;
    }
    PVNODE* node = new PVNODE();
    node->setName(file);
    for (TiXmlNode* child = root->FirstChild(); child; child = child->NextSibling())
        recursiveLoadXML(node, child);
    return node;
}

PVNODE* PEVRANO::recursiveLoadXML(PVNODE* parent, void* xmlNode)
{
    TiXmlNode* node = static_cast<TiXmlNode*>(xmlNode);
    if (!node)
        return nullptr;
    if (node->Type() == TiXmlNode::TINYXML_COMMENT) {
        kvfLog("   [XML] %s\n", node->Value());
        return nullptr;
    }
    TiXmlElement* element = node->ToElement();
    if (!element)
        return nullptr;

    PVNODE* target = parent;
    PVFONT* font = nullptr;
    const std::string name = element->ValueStr();
    for (const WidgetKind& kind : widgetKinds) {
        if (name == kind.element) {
            kvfLog("%s", kind.message);
            target = kind.create();
            target->link(parent);
        }
    }
    if (name == "font") {
        kvfLog("   + create a font\n");
        font = new PVFONT();
    }

    for (TiXmlElement* property = element->FirstChildElement(); property;
         property = property->NextSiblingElement()) {
        // A font takes its own properties; the others fall through to the enclosing node.
        if (font && applyFontProperty(font, property))
            continue;
        if (target)
            applyProperty(target, property);
    }
    for (TiXmlNode* child = element->FirstChild(); child; child = child->NextSibling())
        recursiveLoadXML(target, child);
    return nullptr;
}
