// Included by the test library, which needs nothing of it here. https://developer.apple.com/documentation/xcode
#pragma once
