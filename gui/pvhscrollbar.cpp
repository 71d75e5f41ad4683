#include "gui/pvhscrollbar.h"

PVHSCROLLBAR::PVHSCROLLBAR() : PVSCROLLBAR(false, "PVHSCROLLBAR") {}
