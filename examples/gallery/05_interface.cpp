// An interface loaded from XML (interface.xml beside this file): a window
// that can be dragged by its title bar, with a text field, a button, a label,
// a horizontal and a vertical slider and a box whose colour they set. Events
// polled from the engine are handed to the interface drawn in the previous
// frame; an event tells which button it clicked (clickedId). Off-screen, a
// script types a name, presses the button and drags a slider.
//
// The calls that matter: PEVRANO::loadXML, PVNODE::findByNameInHierarchy,
// PVTEXTFIELD::getCaption, PVLABEL::write, PVHSCROLLBAR/PVVSCROLLBAR::getValue,
// PEVRANO::begin2D, PEVRANO::end2D.
#include "galleryrun.h"

#include <pevrano.h>

namespace {

void push(PV_EVENT_TYPE type, int x, int y, int key = 0)
{
    PVEVENT event;
    event.type = type;
    event.x = x;
    event.y = y;
    event.button = PV_POINTER_LEFT;
    event.key = key;
    event.unicode = type == PV_EVENT_KEY_DOWN ? key : 0;
    PEVRANO::pushEvent(&event);
}

// Presses the pointer on the middle of a widget, moves it by dx and lets go.
void drag(PVBOX* widget, int dx)
{
    K3MVECTOR3D at = widget->getPosition();  // widget positions are relative to their parent
    for (PVNODE* parent = widget->getParent(); parent; parent = parent->getParent())
        at = at + parent->getPosition();
    const int x = int(at.x) + widget->getSizeX() / 2, y = int(at.y) + widget->getSizeY() / 2;
    push(PV_EVENT_POINTER_DOWN, x, y);
    push(PV_EVENT_POINTER_MOVE, x + dx, y);
    push(PV_EVENT_POINTER_UP, x + dx, y);
}

}  // namespace

int main(int argc, char** argv)
{
    GalleryRun run(argc, argv, "05_interface");
    if (!run.start())
        return 1;
    PVOPENGL::setBackgroundColor(0.3f, 0.35f, 0.4f, 1.0f);

    PVTEXTURE::setPath(GALLERY_MADE);  // the font files the file names
    PVFONT::setPath(GALLERY_MADE);
    PVNODE* root = PEVRANO::loadXML(GALLERY_SOURCE "interface.xml");
    if (!root)
        return run.finish();  // the log says which line was wrong
    auto* name = dynamic_cast<PVTEXTFIELD*>(root->findByNameInHierarchy("name"));
    auto* greet = dynamic_cast<PVBUTTON*>(root->findByNameInHierarchy("greet"));
    auto* greeting = dynamic_cast<PVLABEL*>(root->findByNameInHierarchy("greeting"));
    auto* red = dynamic_cast<PVHSCROLLBAR*>(root->findByNameInHierarchy("red"));
    auto* green = dynamic_cast<PVVSCROLLBAR*>(root->findByNameInHierarchy("green"));
    auto* swatch = dynamic_cast<PVBOX*>(root->findByNameInHierarchy("swatch"));
    if (!name || !greet || !greeting || !red || !green || !swatch)
        return run.finish();
    name->clear();

    while (run.nextFrame()) {
        if (run.scripted() && run.frame() == 1) {  // the interface has been drawn once
            drag(name, 0);  // a click gives the field the keys
            for (const char* key = "Ada"; *key; ++key) {
                push(PV_EVENT_KEY_DOWN, 0, 0, *key);
                push(PV_EVENT_KEY_UP, 0, 0, *key);
            }
            drag(greet, 0);
            drag(red->getCursor(), red->getSizeX() / 2);
        }
        PVEVENT event;
        while (PEVRANO::pollEvent(&event)) {
            run.handle(event);
            if (event.clickedId == greet->getId())
                greeting->write("Hello, %s!", name->getCaption()[0] ? name->getCaption() : "stranger");
        }
        swatch->setColor(red->getValue(), green->getValue(), 0.3f, 1.0f);

        PEVRANO::clear(true, true, false);
        PEVRANO::begin2D();  // widgets are drawn in pixels, y downwards
        root->pass(false);
        PEVRANO::end2D();
        run.endFrame();
    }
    return run.finish();
}
