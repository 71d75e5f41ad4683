/// \file
/// One pointer, keyboard or window event, as PEVRANO::pollEvent hands it to the
/// application and PEVRANO::pushEvent takes it.
#ifndef PEVRANO_CORE_PVEVENT_H
#define PEVRANO_CORE_PVEVENT_H

/// What an event reports; PVEVENT says which of its fields are set.
enum PV_EVENT_TYPE : int {
    PV_EVENT_KEY_DOWN,
    PV_EVENT_KEY_UP,
    PV_EVENT_POINTER_MOVE,
    PV_EVENT_POINTER_DOWN,
    PV_EVENT_POINTER_UP,
    PV_EVENT_WHEEL,
    PV_EVENT_RESIZE,
    PV_EVENT_QUIT
};

/// Pointer buttons, and their bits in PEVRANO::getPointer's button mask.
///@{
#define PV_POINTER_LEFT 1
#define PV_POINTER_MIDDLE 2
#define PV_POINTER_RIGHT 3
#define PV_POINTER_BIT(button) (1 << ((button)-1))
///@}

/// SDL 1.2's backspace key, also the character that erases in a text field.
#define PV_KEY_BACKSPACE 8

/// An event, filled by PEVRANO::pollEvent or by the application for pushEvent.
struct PVEVENT {
    /// What happened.
    PV_EVENT_TYPE type = PV_EVENT_POINTER_MOVE;
    /// Key events: the key's SDL 1.2 symbol value (SDLK_ESCAPE is 27, letters
    /// and digits their lower-case ASCII codes) and the character typed, 0
    /// if none.
    ///@{
    int key = 0;
    unsigned int unicode = 0;
    ///@}
    /// The pointer in window pixels, y downwards. Move, down and up events
    /// set it; the other events report where it is.
    ///@{
    int x = 0;
    int y = 0;
    ///@}
    /// Down and up events: PV_POINTER_LEFT, _MIDDLE or _RIGHT.
    int button = 0;
    /// Wheel events: +1 up, -1 down.
    int wheel = 0;
    /// Resize events: the window's new size.
    ///@{
    int width = 0;
    int height = 0;
    ///@}
    /// Filled by PEVRANO::pollEvent for pointer and key events: the id of the
    /// button the interface reported for this event (else 0), and whether the
    /// interface took the event (the pointer is over one of its widgets).
    ///@{
    unsigned int clickedId = 0;
    bool overInterface = false;
    ///@}
};

#endif
