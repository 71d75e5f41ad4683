// A node type of the tests' own (type 18, "custom"): a flat square in the
// node's XY plane, facing +z, drawn with the record's model-view matrix. It
// draws in a flat colour, or lit by its nearest lights as a white-ish
// material, and in the selection profile in the colour of its 5-6-5 code.
#ifndef PEVRANO_TESTS_SUPPORT_QUADNODE_H
#define PEVRANO_TESTS_SUPPORT_QUADNODE_H

#include <GLES/gl.h>

#include <pevrano.h>

namespace pvtest {

class QuadNode : public PVNODE {
public:
    // A square of side 2 * halfSize centred on the node's origin.
    explicit QuadNode(float halfSize);

    bool render(void* element) override;

    // Unlit colour, also the material's ambient and diffuse colour when lit.
    void setColour(const K3MVECTOR4D& value) { colour = value; }
    void setLit(bool value) { lit = value; }
    // The 16-bit code that PEVRANO::select reports for this quad on a 5-6-5
    // surface: 5 bits red, 6 green, 5 blue.
    void setSelectionCode(unsigned short code) { selectionCode = code; }
    unsigned short getSelectionCode() const { return selectionCode; }
    // The colour that writes the code exactly into a 5-6-5 frame buffer.
    static K3MVECTOR4D codeColour(unsigned short code);

private:
    void applyLitMaterial();
    void drawSquare();

    GLfixed vertices[12];
    GLfixed normals[12];
    K3MVECTOR4D colour;
    bool lit;
    unsigned short selectionCode;
};

}  // namespace pvtest

#endif
