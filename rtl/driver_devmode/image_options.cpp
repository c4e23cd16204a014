#include "driver_devmode/image_options.h"

void TImageProcessOptions::cpToPOINT(POINT* points) const {
    for (int i = 0; i < kControlPoints; ++i) {
        points[i].x = CP[i].X;
        points[i].y = CP[i].Y;
    }
}
