// Pevrano 3D Graphics Engine: the one header an application includes.
#ifndef PEVRANO_H
#define PEVRANO_H

// Foundation: log, counted memory, timers, identifiers, key/value parser.

// Math: vectors, quaternions, matrix, plane.

// Engine core: lifecycle, settings and display, GL state, float GL wrapper.

// Scene graph: node, render list, camera, light.

#endif
