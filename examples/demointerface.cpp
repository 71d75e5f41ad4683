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
    SDL_Event event;
    while (SDL_PollEvent(&event))
        if (!handleEvent(event))
            return false;
    // Every call keeps the focused text field's caret blinking.
    PVELEMENT::manageGUIEvents(0, pointerX, pointerY, pointerDown ? 1 : 0, 0, nullptr);
    return true;
}

bool DemoInterface::handleEvent(const SDL_Event& event)
{
    char key = 0;
    switch (event.type) {
    case SDL_QUIT:
        return false;
    case SDL_MOUSEMOTION:
        pointerX = event.motion.x;
        pointerY = event.motion.y;
        break;
    case SDL_MOUSEBUTTONDOWN:
    case SDL_MOUSEBUTTONUP:
        pointerX = event.button.x;
        pointerY = event.button.y;
        pointerDown = event.type == SDL_MOUSEBUTTONDOWN;
        break;
    case SDL_KEYDOWN:
        if (event.key.keysym.sym == SDLK_ESCAPE)
            return false;
        key = event.key.keysym.sym == SDLK_BACKSPACE ? 8 : char(event.key.keysym.unicode & 0x7F);
        break;
    default:
        return true;
    }
    return feed(key);
}

bool DemoInterface::feed(char key)
{
    unsigned int clicked = 0;
    PVELEMENT::manageGUIEvents(key, pointerX, pointerY, pointerDown ? 1 : 0, 0, &clicked);
    if (clicked == quit->getId())
        return false;
    if (clicked == hello->getId()) {
        window->write("\nHello, %s!", name->getCaption()[0] ? name->getCaption() : "stranger");
        window->format();
    }
    return true;
}

// Presses the pointer on the middle of a widget (whose position is relative
// to its parents'), moves it by dx pixels and releases it.
void DemoInterface::drag(PVBOX* widget, int dx)
{
    K3MVECTOR3D at = widget->getPosition();
    for (PVNODE* parent = widget->getParent(); parent; parent = parent->getParent())
        at = at + parent->getPosition();
    pointerX = int(at.x) + widget->getSizeX() / 2;
    pointerY = int(at.y) + widget->getSizeY() / 2;
    pointerDown = true;
    feed(0);
    pointerX += dx;
    feed(0);
    pointerDown = false;
    feed(0);
}

void DemoInterface::visit(const char* visitor)
{
    drag(name, 0);
    for (const char* key = visitor; *key; ++key)
        feed(*key);
    drag(hello, 0);
    drag(slider->getCursor(), slider->getSizeX() / 4);
    pointerX = pointerY = -1;
}
