// The demo's 2D interface, loaded from data/interface.xml: a window with
// text, two buttons, a text field, a slider that sets the character's
// running speed, labels naming the object under the pointer and the frame
// rate, a box playing data/film.mpg in a loop, and a marker for the point
// picked when there is no pointer. It takes the engine's events: the
// window's under X, the scripted visitor's off-screen.
#ifndef PEVRANO_EXAMPLES_DEMOINTERFACE_H
#define PEVRANO_EXAMPLES_DEMOINTERFACE_H

#include <pevrano.h>

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

    // Handles the events waiting for the engine; false once the user quits
    // (Escape, the Quit button or closing the window).
    bool handleEvents();
    // Without a pointer: a visitor clicks in the text field, types a name,
    // clicks Hello and slides the speed up by a quarter of the bar, as a
    // user would; the events are handled with the next ones.
    void visit(const char* visitor);
    PVNODE* getRoot() const { return root; }

private:
    template <class Widget> Widget* find(const char* name);
    void playFilm();
    // False once the event ends the demo.
    bool handleEvent(const PVEVENT& event);
    // Pushes a press in the middle of a widget (whose position is relative
    // to its parents'), a move by dx pixels and a release: a click is a drag
    // by 0.
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
};

#endif
