/* See ddrawint.h; winddi.h takes nothing from this one. */
#pragma once
