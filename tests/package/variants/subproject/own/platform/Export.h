#pragma once

#define HOST_OWN_EXPORT 1
