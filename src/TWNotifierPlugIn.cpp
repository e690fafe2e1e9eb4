// notifier.so: the desktop notifications of `tidewell`, loaded when there is one to post.

#include "platform/qt/TWPluggedNotifier.h"
#include "platform/qt/TWQtNotifier.h"

TWNotifier* TWMakeNotifier()
{
    return new TWQtNotifier;
}
