/// What a plug-in calls in the application that loads it.
#ifndef CORVANE_TESTS_ELOG_ELOGPLUGINHOST_H
#define CORVANE_TESTS_ELOG_ELOGPLUGINHOST_H

/// The plug-in's static constructor calls this before it starts the client: the thread holds the loader's lock then.
extern "C" [[gnu::visibility("default")]] void pluginIsLoading();

#endif
