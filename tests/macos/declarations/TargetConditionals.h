// What the test library asks for. https://developer.apple.com/documentation/xcode
#pragma once

#define TARGET_OS_IPHONE 0
