<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: GPL-3.0-or-later -->
<TS version="2.1" language="en">
<context>
    <name></name>
    <message id="IDS_MANY_FILES">
        <source>Choose three photographs of one scene: dark, middle and bright</source>
        <extracomment>title of the open panel</extracomment>
        <translation>Choose three photographs of one scene: dark, middle and bright</translation>
    </message>
    <message id="IDS_TOO_MANY_ERROR">
        <source>Choose exactly three photographs.</source>
        <extracomment>alert on the open panel</extracomment>
        <translation>Choose exactly three photographs.</translation>
    </message>
    <message id="IDS_OK">
        <source>OK</source>
        <extracomment>button</extracomment>
        <translation>OK</translation>
    </message>
    <message id="IDS_LOAD_FAILED">
        <source>The photograph could not be read.</source>
        <extracomment>a check failed</extracomment>
        <translation>The photograph could not be read.</translation>
    </message>
    <message id="IDS_RESOLUTION_SMALL_ERROR">
        <source>The photograph is less than 100 pixels wide or high.</source>
        <extracomment>a check failed</extracomment>
        <translation>The photograph is less than 100 pixels wide or high.</translation>
    </message>
    <message id="IDS_RESOLUTION_DIFFERENT_ERROR">
        <source>The photograph is not of the same size as the others.</source>
        <extracomment>a check failed</extracomment>
        <translation>The photograph is not of the same size as the others.</translation>
    </message>
    <message id="IDS_LOADING">
        <source>Processing…</source>
        <extracomment>progress window</extracomment>
        <translation>Processing…</translation>
    </message>
    <message id="IDS_SAVE_FAILED">
        <source>The picture could not be saved.</source>
        <extracomment>failure warning</extracomment>
        <translation>The picture could not be saved.</translation>
    </message>
    <message id="IDS_SAVE_WARNING">
        <source>Do you want to save the picture?</source>
        <extracomment>message of the unsaved-changes sheet</extracomment>
        <translation>Do you want to save the picture?</translation>
    </message>
    <message id="IDS_SAVE_PROMPT">
        <source>If you don’t save, your changes will be lost.</source>
        <extracomment>comment of the unsaved-changes sheet</extracomment>
        <translation>If you don’t save, your changes will be lost.</translation>
    </message>
    <message id="IDS_SAVE">
        <source>Save</source>
        <extracomment>button</extracomment>
        <translation>Save</translation>
    </message>
    <message id="IDS_DONT_SAVE">
        <source>Don’t Save</source>
        <extracomment>button</extracomment>
        <translation>Don’t Save</translation>
    </message>
    <message id="IDS_CANCEL">
        <source>Cancel</source>
        <extracomment>button</extracomment>
        <translation>Cancel</translation>
    </message>
    <message id="IDS_TONE_LENGTH">
        <source>Tone length</source>
        <extracomment>slider</extracomment>
        <translation>Tone length</translation>
    </message>
    <message id="IDS_TONE_SATURATION">
        <source>Tone saturation</source>
        <extracomment>slider</extracomment>
        <translation>Tone saturation</translation>
    </message>
    <message id="IDS_BRIHGTNESS">
        <source>Brightness</source>
        <extracomment>slider</extracomment>
        <translation>Brightness</translation>
    </message>
    <message id="IDS_GHOST">
        <source>Ghost removal</source>
        <extracomment>slider</extracomment>
        <translation>Ghost removal</translation>
    </message>
    <message id="IDS_SATURATION">
        <source>Saturation</source>
        <extracomment>slider</extracomment>
        <translation>Saturation</translation>
    </message>
    <message id="IDS_CONTRAST">
        <source>Contrast</source>
        <extracomment>slider</extracomment>
        <translation>Contrast</translation>
    </message>
    <message id="IDS_ORIGINAL">
        <source>Original</source>
        <extracomment>style</extracomment>
        <translation>Original</translation>
    </message>
    <message id="IDS_ART">
        <source>Art</source>
        <extracomment>style</extracomment>
        <translation>Art</translation>
    </message>
    <message id="IDS_BW">
        <source>Black and white</source>
        <extracomment>style</extracomment>
        <translation>Black and white</translation>
    </message>
    <message id="IDS_OUTPUT_SIZE">
        <source>Output size:</source>
        <extracomment>before WIDTHxHEIGHT</extracomment>
        <translation>Output size:</translation>
    </message>
    <message id="IDS_PIX">
        <source>pixels</source>
        <extracomment>after WIDTHxHEIGHT</extracomment>
        <translation>pixels</translation>
    </message>
    <message id="IDS_MENU_ABOUT">
        <source>&amp;About %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>&amp;About %1</translation>
    </message>
    <message id="IDS_MENU_HIDE">
        <source>&amp;Hide %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>&amp;Hide %1</translation>
    </message>
    <message id="IDS_MENU_HIDEOTHERS">
        <source>Hide &amp;Others</source>
        <extracomment>menu</extracomment>
        <translation>Hide &amp;Others</translation>
    </message>
    <message id="IDS_MENU_SHOWALL">
        <source>&amp;Show All</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Show All</translation>
    </message>
    <message id="IDS_MENU_QUIT">
        <source>&amp;Quit %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>&amp;Quit %1</translation>
    </message>
    <message id="IDS_MENU_TILES">
        <source>&amp;Open Photographs…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Open Photographs…</translation>
    </message>
    <message id="IDS_MENU_SAVE">
        <source>&amp;Save As…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Save As…</translation>
    </message>
    <message id="IDS_MENU_PAGESETUP">
        <source>Page Set&amp;up…</source>
        <extracomment>menu</extracomment>
        <translation>Page Set&amp;up…</translation>
    </message>
    <message id="IDS_MENU_PRINT">
        <source>&amp;Print…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Print…</translation>
    </message>
    <message id="IDS_MENU_ACTUALSIZE">
        <source>&amp;Actual Size</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Actual Size</translation>
    </message>
    <message id="IDS_MENU_FITIN">
        <source>&amp;Fit to Window</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Fit to Window</translation>
    </message>
    <message id="IDS_MENU_ZOOMIN">
        <source>Zoom &amp;In</source>
        <extracomment>menu</extracomment>
        <translation>Zoom &amp;In</translation>
    </message>
    <message id="IDS_MENU_ZOOMOUT">
        <source>Zoom &amp;Out</source>
        <extracomment>menu</extracomment>
        <translation>Zoom &amp;Out</translation>
    </message>
    <message id="IDS_MENU_HELP">
        <source>Online &amp;Guide</source>
        <extracomment>menu</extracomment>
        <translation>Online &amp;Guide</translation>
    </message>
    <message id="IDS_MENU_FAQ">
        <source>&amp;Frequently Asked Questions</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Frequently Asked Questions</translation>
    </message>
    <message id="IDS_MENU_CCS">
        <source>&amp;Support</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Support</translation>
    </message>
    <message id="IDS_AC_DONTSHOWAGAIN">
        <source>Don’t show this again</source>
        <extracomment>check box of the guide</extracomment>
        <translation>Don’t show this again</translation>
    </message>
    <message id="IDS_AC_Close">
        <source>Close</source>
        <extracomment>button of the guide</extracomment>
        <translation>Close</translation>
    </message>
    <message id="IDS_GUIDE_PAGE">
        <source>index.html</source>
        <extracomment>file in resources/guide</extracomment>
        <translation>index.html</translation>
    </message>
    <message id="IDS_MENUBAR_FILE">
        <source>&amp;File</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;File</translation>
    </message>
    <message id="IDS_MENUBAR_VIEW">
        <source>&amp;View</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;View</translation>
    </message>
    <message id="IDS_MENUBAR_WINDOW">
        <source>&amp;Window</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Window</translation>
    </message>
    <message id="IDS_MENUBAR_HELP">
        <source>&amp;Help</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Help</translation>
    </message>
    <message id="IDS_MENU_SHOWGUIDE">
        <source>Show Guide at S&amp;tart</source>
        <extracomment>Help menu, with a check mark</extracomment>
        <translation>Show Guide at S&amp;tart</translation>
    </message>
    <message id="IDS_ABOUT_TEXT">
        <source>Version %1 · Three exposures, one picture. Free software under the GNU General Public License, version 3 or later.</source>
        <extracomment>about window, below the name; %1 is the version</extracomment>
        <translation>Version %1 · Three exposures, one picture. Free software under the GNU General Public License, version 3 or later.</translation>
    </message>
    <message id="IDS_WINDOW_CLOSE">
        <source>Close</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Close</translation>
    </message>
    <message id="IDS_WINDOW_MINIMIZE">
        <source>Minimise</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Minimise</translation>
    </message>
    <message id="IDS_WINDOW_ZOOM">
        <source>Maximise or restore</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Maximise or restore</translation>
    </message>
    <message id="IDS_VALUE_IN_USE">
        <source>Value in use: %1</source>
        <extracomment>tooltip of a slider whose number shows an offset</extracomment>
        <translation>Value in use: %1</translation>
    </message>
    <message id="IDS_SLIDER_RESET">
        <source>Double-click for the default: %1</source>
        <extracomment>tooltip of a slider; %1 is a number</extracomment>
        <translation>Double-click for the default: %1</translation>
    </message>
    <message id="IDS_GROUP_MERGE">
        <source>Merge</source>
        <extracomment>group of the four merge sliders</extracomment>
        <translation>Merge</translation>
    </message>
    <message id="IDS_GROUP_EFFECT">
        <source>Colour effect</source>
        <extracomment>group of saturation, contrast and style</extracomment>
        <translation>Colour effect</translation>
    </message>
    <message id="IDS_STYLE">
        <source>Style</source>
        <extracomment>caption of the list of styles</extracomment>
        <translation>Style</translation>
    </message>
    <message id="IDS_HISTOGRAM">
        <source>Histogram</source>
        <extracomment>caption</extracomment>
        <translation>Histogram</translation>
    </message>
    <message id="IDS_PHOTOGRAPH">
        <source>Photograph %1</source>
        <extracomment>name of a thumbnail; %1 is 1, 2 or 3</extracomment>
        <translation>Photograph %1</translation>
    </message>
    <message id="IDS_ADJUSTMENTS">
        <source>Adjustments</source>
        <extracomment>name of the side panel</extracomment>
        <translation>Adjustments</translation>
    </message>
    <message id="IDS_HELP_DESCRIPTION">
        <source>Merges three photographs of one scene, taken at different exposures, into one picture.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Merges three photographs of one scene, taken at different exposures, into one picture.</translation>
    </message>
    <message id="IDS_HELP_PHOTOGRAPHS">
        <source>Three photographs to open: JPEG or camera RAW.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Three photographs to open: JPEG or camera RAW.</translation>
    </message>
    <message id="IDS_HELP_NO_GUIDE">
        <source>Do not show the guide at start.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Do not show the guide at start.</translation>
    </message>
    <message id="IDS_PICTURE">
        <source>Picture</source>
        <extracomment>name of the picture view</extracomment>
        <translation>Picture</translation>
    </message>
    <message id="IDS_PICTURE_KEYS">
        <source>The arrow keys move the picture.</source>
        <extracomment>description of the picture view for screen readers</extracomment>
        <translation>The arrow keys move the picture.</translation>
    </message>
    <message id="IDS_STATUS">
        <source>Status</source>
        <extracomment>name of the status line for screen readers</extracomment>
        <translation>Status</translation>
    </message>
    <message id="IDS_FILE_REASON">
        <source>%1: %2</source>
        <extracomment>status line; %1 is a file, %2 a sentence</extracomment>
        <translation>%1: %2</translation>
    </message>
    <message id="IDS_NO_MEMORY">
        <source>There is not enough memory.</source>
        <extracomment>status line</extracomment>
        <translation>There is not enough memory.</translation>
    </message>
    <message id="IDS_MERGE_TOO_FAR">
        <source>The exposures are too far apart to be merged.</source>
        <extracomment>status line</extracomment>
        <translation>The exposures are too far apart to be merged.</translation>
    </message>
    <message id="IDS_MERGE_UNALIGNED">
        <source>The photographs could not be aligned.</source>
        <extracomment>status line</extracomment>
        <translation>The photographs could not be aligned.</translation>
    </message>
    <message id="IDS_MERGE_ORDER">
        <source>The exposures could not be put in order.</source>
        <extracomment>status line</extracomment>
        <translation>The exposures could not be put in order.</translation>
    </message>
    <message id="IDS_MERGE_FAILED">
        <source>The photographs could not be merged.</source>
        <extracomment>status line</extracomment>
        <translation>The photographs could not be merged.</translation>
    </message>
    <message id="IDS_MERGE_FALLBACK">
        <source>The exposures could not be merged; the picture shows one of them.</source>
        <extracomment>status line</extracomment>
        <translation>The exposures could not be merged; the picture shows one of them.</translation>
    </message>
    <message id="IDS_MERGE_LEFT_OUT">
        <source>It does not show what the others show and was left out.</source>
        <extracomment>status line, behind the name of a photograph</extracomment>
        <translation>It does not show what the others show and was left out.</translation>
    </message>
    <message id="IDS_PAGE_NOT_OPENED">
        <source>%1 could not be opened in a browser.</source>
        <extracomment>status line; %1 is the address of a page</extracomment>
        <translation>%1 could not be opened in a browser.</translation>
    </message>
    <message id="IDS_RUN_FAILED">
        <source>This could not be done.</source>
        <extracomment>status line</extracomment>
        <translation>This could not be done.</translation>
    </message>
    <message id="IDS_MERGE_AGAIN">
        <source>Merge the photographs again first.</source>
        <extracomment>status line</extracomment>
        <translation>Merge the photographs again first.</translation>
    </message>
    <message id="IDS_MERGING">
        <source>Merging…</source>
        <extracomment>progress window</extracomment>
        <translation>Merging…</translation>
    </message>
    <message id="IDS_EMPTY_TITLE">
        <source>Three photographs, one picture</source>
        <extracomment>window without a picture</extracomment>
        <translation>Three photographs, one picture</translation>
    </message>
    <message id="IDS_EMPTY_HINT">
        <source>Drop a dark, a middle and a bright exposure of one scene here</source>
        <extracomment>window without a picture</extracomment>
        <translation>Drop a dark, a middle and a bright exposure of one scene here</translation>
    </message>
    <message id="IDS_OPEN">
        <source>Open Photographs…</source>
        <extracomment>button of the window without a picture</extracomment>
        <translation>Open Photographs…</translation>
    </message>
    <message id="IDS_NOT_A_PHOTOGRAPH">
        <source>“%1” is neither a JPEG nor a camera RAW file.</source>
        <extracomment>%1 is a file</extracomment>
        <translation>“%1” is neither a JPEG nor a camera RAW file.</translation>
    </message>
    <message id="IDS_FILTER_PHOTOGRAPHS">
        <source>Photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Photographs</translation>
    </message>
    <message id="IDS_FILTER_JPEG">
        <source>JPEG photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>JPEG photographs</translation>
    </message>
    <message id="IDS_FILTER_RAW">
        <source>Camera RAW photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Camera RAW photographs</translation>
    </message>
    <message id="IDS_ZOOM_OUT">
        <source>Zoom out</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Zoom out</translation>
    </message>
    <message id="IDS_ZOOM_IN">
        <source>Zoom in</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Zoom in</translation>
    </message>
    <message id="IDS_ZOOM_FIT">
        <source>Fit to window</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Fit to window</translation>
    </message>
    <message id="IDS_ZOOM_FIT_SHORT">
        <source>Fit</source>
        <extracomment>zoom segment, face</extracomment>
        <translation>Fit</translation>
    </message>
    <message id="IDS_ZOOM_ACTUAL">
        <source>Actual size</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Actual size</translation>
    </message>
    <message id="IDS_ZOOM_PERCENT">
        <source>%1%</source>
        <extracomment>%1 is a number</extracomment>
        <translation>%1%</translation>
    </message>
    <message id="IDS_SAVING">
        <source>Saving…</source>
        <extracomment>progress window</extracomment>
        <translation>Saving…</translation>
    </message>
    <message id="IDS_SAVED_AS">
        <source>Saved as %1</source>
        <extracomment>status line; %1 is a file</extracomment>
        <translation>Saved as %1</translation>
    </message>
    <message id="IDS_RESCUED">
        <source>The unsaved picture was rescued: %1</source>
        <extracomment>status line at the next start, and on the terminal; %1 is a file</extracomment>
        <translation>The unsaved picture was rescued: %1</translation>
    </message>
    <message id="IDS_SAVE_OVER_PHOTOGRAPH">
        <source>This is one of the three photographs. Choose another name.</source>
        <extracomment>alert on the save panel</extracomment>
        <translation>This is one of the three photographs. Choose another name.</translation>
    </message>
    <message id="IDS_SAVE_TYPE">
        <source>Type:</source>
        <extracomment>save options</extracomment>
        <translation>Type:</translation>
    </message>
    <message id="IDS_SAVE_QUALITY">
        <source>Quality:</source>
        <extracomment>save options</extracomment>
        <translation>Quality:</translation>
    </message>
    <message id="IDS_SAVE_COMPRESSION">
        <source>Compression:</source>
        <extracomment>save options</extracomment>
        <translation>Compression:</translation>
    </message>
    <message id="IDS_SAVE_UNCOMPRESSED">
        <source>None</source>
        <extracomment>save options, compression of a TIFF</extracomment>
        <translation>None</translation>
    </message>
    <message id="IDS_SAVE_STANDARD">
        <source>The standard quality and compression are used.</source>
        <extracomment>save options</extracomment>
        <translation>The standard quality and compression are used.</translation>
    </message>
    <message id="IDS_DISK_FULL">
        <source>The disk is full.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>The disk is full.</translation>
    </message>
    <message id="IDS_DISK_READONLY">
        <source>The disk can only be read.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>The disk can only be read.</translation>
    </message>
    <message id="IDS_NO_PERMISSION">
        <source>You may not write to this folder.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>You may not write to this folder.</translation>
    </message>
    <message id="IDS_FOLDER_GONE">
        <source>The folder no longer exists.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>The folder no longer exists.</translation>
    </message>
    <message id="IDS_PRINTING">
        <source>Printing…</source>
        <extracomment>progress window</extracomment>
        <translation>Printing…</translation>
    </message>
    <message id="IDS_PRINT_FAILED">
        <source>The picture could not be printed.</source>
        <extracomment>status line</extracomment>
        <translation>The picture could not be printed.</translation>
    </message>
    <message id="IDS_SHARE">
        <source>Share</source>
        <extracomment>button</extracomment>
        <translation>Share</translation>
    </message>
    <message id="IDS_SHARE_EMAIL">
        <source>Send by E-Mail…</source>
        <extracomment>share menu</extracomment>
        <translation>Send by E-Mail…</translation>
    </message>
    <message id="IDS_SHARE_OPEN_WITH">
        <source>Open with Another Program…</source>
        <extracomment>share menu</extracomment>
        <translation>Open with Another Program…</translation>
    </message>
    <message id="IDS_SHARE_COPY">
        <source>Copy Picture</source>
        <extracomment>share menu</extracomment>
        <translation>Copy Picture</translation>
    </message>
    <message id="IDS_SHARE_SHOW_IN_FOLDER">
        <source>Show in Folder</source>
        <extracomment>share menu</extracomment>
        <translation>Show in Folder</translation>
    </message>
    <message id="IDS_COPIED">
        <source>Picture copied</source>
        <extracomment>status line</extracomment>
        <translation>Picture copied</translation>
    </message>
    <message id="IDS_SHARING">
        <source>Preparing to share…</source>
        <extracomment>progress window</extracomment>
        <translation>Preparing to share…</translation>
    </message>
    <message id="IDS_SHARE_FAILED">
        <source>The picture could not be shared.</source>
        <extracomment>status line</extracomment>
        <translation>The picture could not be shared.</translation>
    </message>
</context>
</TS>
