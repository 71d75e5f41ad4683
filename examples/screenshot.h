// Saves the current colour buffer as an RGB PNG file.
#ifndef PEVRANO_EXAMPLES_SCREENSHOT_H
#define PEVRANO_EXAMPLES_SCREENSHOT_H

bool saveScreenshot(const char* path, int width, int height);

#endif
