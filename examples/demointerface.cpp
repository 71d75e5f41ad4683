#include "demointerface.h"

#include <string>

template <class Widget> Widget* DemoInterface::find(const char* wanted)
{
    return dynamic_cast<Widget*>(root->findByNameInHierarchy(wanted));
}

// The interface file names its font sheet and kerning file relative to the
// font folder the build fills with pevrano-font.
bool DemoInterface::build()
{
    const std::string texturePath = PVTEXTURE::getPath();
    PVTEXTURE::setPath(PEVRANO_DEMO_FONT_DIR "/");
    PVFONT::setPath(PEVRANO_DEMO_FONT_DIR "/");
    root = PEVRANO::loadXML(PEVRANO_DEMO_DATA "/interface.xml");
    PVTEXTURE::setPath(texturePath.c_str());
    if (!root)
        return false;
    window = find<PVWINDOW>("window");
    hello = find<PVBUTTON>("hello");
    quit = find<PVBUTTON>("quit");
    name = find<PVTEXTFIELD>("name");
    slider = find<PVHSCROLLBAR>("slider");
    speed = find<PVLABEL>("speed");
    picked = find<PVLABEL>("picked");
    rate = find<PVLABEL>("rate");
    screen = find<PVBOX>("screen");
    marker = find<PVBOX>("marker");
    if (!window || !hello || !quit || !name || !slider || !speed || !picked || !rate || !screen || !marker ||
        !speed->getFont())
        return false;
    playFilm();
    name->clear();
    slider->setValue(0.5f);
    window->setForemost(0);
    showPicked(nullptr);
    hideMarker();
    return true;
}

// data/film.mpg (256 x 192) plays in a loop into a texture that the screen
// box shows; the picture fills the top 192 rows of the texture.
void DemoInterface::playFilm()
{
    PVTEXTURE* picture = new PVTEXTURE();
    picture->create(256, 256, 3);
    picture->setFilter(true, false, true);  // no mipmaps: only level 0 is replaced
    screen->setTexture(picture);
    PVBOXCOORD frame(1.0f, 192.0f / 256.0f, true);
    screen->setBoxCoords(frame);
    screen->setThickness(0);
    PVVIDEO::setMPGPath(PEVRANO_DEMO_DATA "/");
    film = new PVVIDEO();
    if (film->load("film.mpg")) {
        film->setTexture(picture);
        film->playLoop();
    }
}

float DemoInterface::getAnimationSpeed() { return 2.0f * slider->getValue(); }

void DemoInterface::showPicked(const char* object)
{
    picked->write("Pointer on: %s", object ? object : "nothing");
}

void DemoInterface::showFrameRate(float framesPerSecond)
{
    rate->write("%.1f frames per second", framesPerSecond);
}

void DemoInterface::showMarker(int x, int y)
{
    marker->setPosition(float(x - marker->getSizeX() / 2), float(y - marker->getSizeY() / 2), 0.0f);
    marker->setDisplayStatus(true);
}

void DemoInterface::hideMarker() { marker->setDisplayStatus(false); }

void DemoInterface::draw(int milliseconds)
{
    film->update(milliseconds);
    speed->write("%.2fx", getAnimationSpeed());
    PEVRANO::begin2D();
    root->pass(false);
    PEVRANO::end2D();
}

bool DemoInterface::handleEvents()
{
    PVEVENT event;
    while (PEVRANO::pollEvent(&event))
        if (!handleEvent(event))
            return false;
    return true;
}

bool DemoInterface::handleEvent(const PVEVENT& event)
{
    const int escape = 27;  // SDL 1.2's SDLK_ESCAPE
    if (event.type == PV_EVENT_QUIT || (event.type == PV_EVENT_KEY_DOWN && event.key == escape))
        return false;
    if (event.clickedId == quit->getId())
        return false;
    if (event.clickedId == hello->getId()) {
        window->write("\nHello, %s!", name->getCaption()[0] ? name->getCaption() : "stranger");
        window->format();
    }
    return true;
}

namespace {

void pushPointer(PV_EVENT_TYPE type, int x, int y)
{
    PVEVENT event;
    event.type = type;
    event.x = x;
    event.y = y;
    event.button = PV_POINTER_LEFT;
    PEVRANO::pushEvent(&event);
}

void pushKey(PV_EVENT_TYPE type, char typed)
{
    PVEVENT event;
    event.type = type;
    event.key = typed;
    event.unicode = type == PV_EVENT_KEY_DOWN ? static_cast<unsigned char>(typed) : 0;
    PEVRANO::pushEvent(&event);
}

}  // namespace

void DemoInterface::drag(PVBOX* widget, int dx)
{
    K3MVECTOR3D at = widget->getPosition();
    for (PVNODE* parent = widget->getParent(); parent; parent = parent->getParent())
        at = at + parent->getPosition();
    const int x = int(at.x) + widget->getSizeX() / 2;
    const int y = int(at.y) + widget->getSizeY() / 2;
    pushPointer(PV_EVENT_POINTER_DOWN, x, y);
    pushPointer(PV_EVENT_POINTER_MOVE, x + dx, y);
    pushPointer(PV_EVENT_POINTER_UP, x + dx, y);
}

void DemoInterface::visit(const char* visitor)
{
    drag(name, 0);
    for (const char* key = visitor; *key; ++key) {
        pushKey(PV_EVENT_KEY_DOWN, *key);
        pushKey(PV_EVENT_KEY_UP, *key);
    }
    drag(hello, 0);
    drag(slider->getCursor(), slider->getSizeX() / 4);
}
