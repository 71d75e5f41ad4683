/// \file
/// The engine's name and version.
#ifndef PEVRANO_CORE_PVVERSION_H
#define PEVRANO_CORE_PVVERSION_H

/// The name the engine gives itself in the log and as the default window title.
#define PEVRANO_VERSION_STRING "Pevrano 3D Graphics Engine for Axim v1.6.6a (debug)"

#endif
