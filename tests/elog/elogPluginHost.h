/// What a plug-in asks of the application that loads it.
#ifndef CORVANE_TESTS_ELOG_ELOGPLUGINHOST_H
#define CORVANE_TESTS_ELOG_ELOGPLUGINHOST_H

/// Called by the plug-in's static constructor, and so with the loader's lock held, before it asks for the client.
extern "C" [[gnu::visibility("default")]] void pluginIsLoading();

#endif
