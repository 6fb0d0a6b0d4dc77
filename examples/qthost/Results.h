// What a result code means to the person at the screen. Any thread.
#pragma once

#include <QtCore/QString>

/// One or two sentences: what has happened, and what to do about it.
QString explanation(int result);
