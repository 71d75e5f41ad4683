// A node type of the demo's own: a flat square of one colour in its node's
// XY plane, facing +z, lit by the lights nearest to it. In the selection
// profile it draws in its colour code, so that picking finds it too.
#ifndef PEVRANO_EXAMPLES_DEMOTILE_H
#define PEVRANO_EXAMPLES_DEMOTILE_H

#include <pevrano.h>

class DemoTile : public PVNODE {
public:
    DemoTile(float size, const K3MVECTOR4D& colour);
    bool render(void* element) override;

private:
    void setSelectionColour(const PVELEMENT* record);

    K3MVECTOR4D colour;
    GLfixed vertices[12];
    GLfixed normals[12];
};

#endif
