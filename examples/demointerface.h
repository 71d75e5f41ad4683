// The demo's 2D interface, loaded from data/interface.xml: a window with
// text, two buttons, a text field, a slider that sets the character's
// running speed, labels naming the object under the pointer and the frame
// rate, a box playing data/film.mpg in a loop, and a marker for the point
// picked when there is no pointer. Under X it takes SDL's mouse and key
// events.
#ifndef PEVRANO_EXAMPLES_DEMOINTERFACE_H
#define PEVRANO_EXAMPLES_DEMOINTERFACE_H

#include <pevrano.h>

#include <SDL/SDL.h>

class DemoInterface {
public:
    // False when the file or one of its widgets is missing (the log tells).
    bool build();
    // The 2D pass of a frame; the film moves on by the given milliseconds.
    void draw(int milliseconds);

    // The running speed the slider sets: 0 to 2 times the recorded speed.
    float getAnimationSpeed();
    const char* getTypedName() const { return name->getCaption(); }
    void showPicked(const char* name);
    void showFrameRate(float framesPerSecond);
    // Shows the marker centred on a window point.
    void showMarker(int x, int y);
    void hideMarker();

    // Handles the events waiting in SDL's queue; false once the user quits
    // (Escape, the Quit button or closing the window).
    bool handleEvents();
    // Without a pointer: a visitor clicks in the text field, types a name,
    // clicks Hello and slides the speed up by a quarter of the bar, as a
    // user would.
    void visit(const char* visitor);
    PVNODE* getRoot() const { return root; }
    int getPointerX() const { return pointerX; }
    int getPointerY() const { return pointerY; }

private:
    template <class Widget> Widget* find(const char* name);
    void playFilm();
    bool handleEvent(const SDL_Event& event);
    // Passes a key and the pointer to the interface; false once Quit is clicked.
    bool feed(char key);
    // A click is a drag by 0.
    void drag(PVBOX* widget, int dx);

    PVNODE* root = nullptr;  // the window, the screen and the marker
    PVWINDOW* window = nullptr;
    PVBUTTON* hello = nullptr;
    PVBUTTON* quit = nullptr;
    PVTEXTFIELD* name = nullptr;
    PVHSCROLLBAR* slider = nullptr;
    PVLABEL* speed = nullptr;
    PVLABEL* picked = nullptr;
    PVLABEL* rate = nullptr;
    PVBOX* screen = nullptr;
    PVBOX* marker = nullptr;
    PVVIDEO* film = nullptr;
    int pointerX = -1;
    int pointerY = -1;
    bool pointerDown = false;
};

#endif
