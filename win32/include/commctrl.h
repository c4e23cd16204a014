// Messages to common controls.
#pragma once

#define BCM_SETSHIELD 0x160C
