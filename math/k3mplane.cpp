#include "math/k3mplane.h"

K3MPLANE::K3MPLANE(const K3MVECTOR3D& p1, const K3MVECTOR3D& p2, const K3MVECTOR3D& p3)
{
    K3MVECTOR3D normal = ((p2 - p1) ^ (p3 - p1)).normalize();
    a = normal.x;
    b = normal.y;
    c = normal.z;
    d = -(normal % p1);
}
