/// \file
/// Pevrano 3D Graphics Engine: the one header an application includes.
#ifndef PEVRANO_PEVRANO_H
#define PEVRANO_PEVRANO_H

// Foundation: start-up, log, counted memory, timers, identifiers, key/value parser.
#include "foundation/kvffile.h"
#include "foundation/kvffoundation.h"
#include "foundation/kvfid.h"
#include "foundation/kvflog.h"
#include "foundation/kvfmemory.h"
#include "foundation/kvfparser.h"
#include "foundation/kvfreader.h"
#include "foundation/kvftimer.h"

// Math: vectors, quaternions, matrix, plane.
#include "math/k3mmatrix.h"
#include "math/k3mplane.h"
#include "math/k3mvector2d.h"
#include "math/k3mvector3d.h"
#include "math/k3mvector4d.h"

// Engine core: lifecycle, settings and display, GL state, float GL wrapper.
#include "core/pevrano.h"
#include "core/pvgl.h"
#include "core/pvopengl.h"
#include "core/pvsettings.h"

// Scene graph: node, render list, camera, light.
#include "scene/pvcamera.h"
#include "scene/pvelement.h"
#include "scene/pvhelper.h"
#include "scene/pvlight.h"
#include "scene/pvnode.h"

// Assets: textures, materials, shaders, frame buffers, particle emitters,
// meshes and skeletal animations.
#include "assets/pvemitter.h"
#include "assets/pvfbo.h"
#include "assets/pvmaterial.h"
#include "assets/pvshader.h"
#include "assets/pvtexture.h"

// Video: MPEG video played into a texture.
#include "assets/pvanim.h"
#include "assets/pvboneframe.h"
#include "assets/pvmesh.h"
#include "video/pvvideo.h"

// 2D interface: boxes, fonts, buttons, labels, text fields, scroll bars,
// windows (their pointer and keyboard input goes through
// PVELEMENT::manageGUIEvents).
#include "gui/pvbox.h"
#include "gui/pvbutton.h"
#include "gui/pvfont.h"
#include "gui/pvhscrollbar.h"
#include "gui/pvlabel.h"
#include "gui/pvscrollbar.h"
#include "gui/pvtextfield.h"
#include "gui/pvvscrollbar.h"
#include "gui/pvwindow.h"

#endif
