// The names of the I/O registry that the product uses, as on macOS.
#pragma once

#define kIOServicePlane "IOService"
