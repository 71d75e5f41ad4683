#include "gui/pvvscrollbar.h"

PVVSCROLLBAR::PVVSCROLLBAR() : PVSCROLLBAR(true, "PVVSCROLLBAR") {}
