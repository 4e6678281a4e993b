// Shows topics of an HTML help system in a web browser: start up with the system's root URL, display, shut down. All
// functions return 0, or -1 on failure; nothing is reported. GUI thread only.
#pragma once

// Remembers the root URL. -1 when started already, or for an empty root.
int WWHelp_Startup(const char* root);
// Forgets it. -1 when not started.
int WWHelp_Shutdown();

// The topic alone. Does nothing, and returns 0, when either text is null or empty.
int WWHelp_DisplayHelp(const char* context, const char* topic);

// The topic beside the navigation pane, with one of its tabs in front. -1 when either text is null or empty.
int WWHelp_DisplayHelpWithNavigation(const char* context, const char* topic);
int WWHelp_DisplayHelpWithContents(const char* context, const char* topic);
int WWHelp_DisplayHelpWithIndex(const char* context, const char* topic);
int WWHelp_DisplayHelpWithSearch(const char* context, const char* topic);
int WWHelp_DisplayHelpWithFavorites(const char* context, const char* topic);

// The help system as it opens by itself, with one of the tabs in front.
int WWHelp_DisplayHelpNavigation();
int WWHelp_DisplayHelpContents();
int WWHelp_DisplayHelpIndex();
int WWHelp_DisplayHelpSearch();
int WWHelp_DisplayHelpFavorites();

// All of them: `single` non-zero for the topic alone, `tab` 1 to 4 for contents, index, search or favorites in front.
// Without a context and a topic, the help system as it opens by itself.
int private_WWHelp_DisplayHelp(const char* context, const char* topic, int single, int tab);
