// Pevrano 3D Graphics Engine: the one header an application includes.
#ifndef PEVRANO_H
#define PEVRANO_H

// Foundation: start-up, log, counted memory, timers, identifiers, key/value parser.
#include "foundation/kvffoundation.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvftimer.h"
#include "foundation/kvfid.h"
#include "foundation/kvffile.h"
#include "foundation/kvfparser.h"

// Math: vectors, quaternions, matrix, plane.
#include "math/k3mvector2d.h"
#include "math/k3mvector3d.h"
#include "math/k3mvector4d.h"
#include "math/k3mmatrix.h"
#include "math/k3mplane.h"

// Engine core: lifecycle, settings and display, GL state, float GL wrapper.
#include "core/pvsettings.h"
#include "core/pevrano.h"
#include "core/pvopengl.h"
#include "core/pvgl.h"

// Scene graph: node, render list, camera, light.
#include "scene/pvnode.h"
#include "scene/pvelement.h"
#include "scene/pvcamera.h"
#include "scene/pvlight.h"

// Assets: textures, materials, shaders and frame buffers.
#include "assets/pvtexture.h"
#include "assets/pvmaterial.h"
#include "assets/pvshader.h"
#include "assets/pvfbo.h"

// 2D interface: boxes, fonts, buttons, labels, text fields, scroll bars,
// windows (their pointer and keyboard input goes through
// PVELEMENT::manageGUIEvents).
#include "gui/pvbox.h"
#include "gui/pvfont.h"
#include "gui/pvbutton.h"
#include "gui/pvlabel.h"
#include "gui/pvtextfield.h"
#include "gui/pvscrollbar.h"
#include "gui/pvhscrollbar.h"
#include "gui/pvvscrollbar.h"
#include "gui/pvwindow.h"

#endif
