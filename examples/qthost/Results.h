// Explains a result code to the user. Any thread.
#pragma once

#include <QtCore/QString>

/// One or two sentences: what has happened, and what the user can do.
QString explanation(int result);
