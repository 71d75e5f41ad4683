// Pointer and keyboard dispatch for the 2D interface: finds the widget under
// the pointer among those drawn in the last 2D pass, reports buttons, drags
// movable widgets within their limits, raises pressed windows and feeds keys
// to the text field that has the focus. The render list's manageGUIEvents
// hands its calls here.
#ifndef PEVRANO_GUI_PVINPUT_H
#define PEVRANO_GUI_PVINPUT_H

class PVBOX;
class PVBUTTON;
class PVTEXTFIELD;

class PVINPUT {
public:
    // key: the key pressed this call (0 for none); (x, y): the pointer in
    // window pixels, y downwards; pointerDown: non-zero while held.
    // Returns whether the pointer is over a displayed widget; clickedId (when
    // not null) receives the id of the button reported by this call, or 0.
    static bool manage(char key, int x, int y, int pointerDown, unsigned int* clickedId);
    // Forgets the pointer state, the pressed widget and the focus.
    static void reset();
    // The text field with the keyboard focus, if it was drawn in the last
    // 2D pass.
    static PVTEXTFIELD* getFocus();

private:
    // The displayed widget under (x, y) with the highest foremost stamp.
    static PVBOX* widgetAt(int x, int y);
    // A widget of the last 2D pass by node id, or null.
    static PVBOX* passedWidget(unsigned int id);
    static unsigned int press(PVBOX* widget);
    static void drag(PVBOX* widget, int dx, int dy);
    static unsigned int release(PVBOX* widget, int x, int y);
    static void feedFocus(char key);

    static bool wasDown;
    static int lastX;
    static int lastY;
    // Node ids, so that a widget deleted in between is never touched.
    static unsigned int pressedId;
    static unsigned int focusId;
    static bool moved;
};

#endif
