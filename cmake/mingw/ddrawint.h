/* The cross compiler's winddi.h includes this header of the driver kit, but its package leaves it
   out. The names that winddi.h takes from it, as types without content. */
#pragma once

typedef struct _DD_DIRECTDRAW_GLOBAL DD_DIRECTDRAW_GLOBAL;
typedef struct _DD_SURFACE_LOCAL DD_SURFACE_LOCAL, *PDD_SURFACE_LOCAL;
typedef struct _DD_CALLBACKS DD_CALLBACKS;
typedef struct _DD_SURFACECALLBACKS DD_SURFACECALLBACKS;
typedef struct _DD_PALETTECALLBACKS DD_PALETTECALLBACKS;
typedef struct _DD_HALINFO DD_HALINFO;
typedef struct _VIDEOMEMORY VIDEOMEMORY;
