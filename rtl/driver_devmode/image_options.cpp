#include "driver_devmode/image_options.h"

void TImageProcessOptions::Init() {
    DitherMethod = 2;
    Active = 1;
    Contrast = 5;
    Brightness = 5;
    CP[0].SetValues(0, 0);
    CP[1].SetValues(127, 0);
    CP[2].SetValues(127, 255);
    CP[3].SetValues(255, 255);
    CriticalZone.SetValues(117, 137);
    VisibleZone.SetValues(37, 253);
    ColorMixer.SetValues(30, 59, 11);
    reserved_39 = 0;
}

void TImageProcessOptions::cpToPOINT(POINT* points) const {
    for (int i = 0; i < kControlPoints; ++i) {
        points[i].x = CP[i].X;
        points[i].y = CP[i].Y;
    }
}
