<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: GPL-3.0-or-later -->
<TS version="2.1" language="de">
<context>
    <name></name>
    <message id="IDS_MANY_FILES">
        <source>Choose three photographs of one scene: dark, middle and bright</source>
        <extracomment>title of the open panel</extracomment>
        <translation>Wählen Sie drei Fotos eines Motivs: dunkel, mittel und hell</translation>
    </message>
    <message id="IDS_TOO_MANY_ERROR">
        <source>Choose exactly three photographs.</source>
        <extracomment>alert on the open panel</extracomment>
        <translation>Wählen Sie genau drei Fotos.</translation>
    </message>
    <message id="IDS_OK">
        <source>OK</source>
        <extracomment>button</extracomment>
        <translation>OK</translation>
    </message>
    <message id="IDS_LOAD_FAILED">
        <source>The photograph could not be read.</source>
        <extracomment>a check failed</extracomment>
        <translation>Das Foto konnte nicht gelesen werden.</translation>
    </message>
    <message id="IDS_RESOLUTION_SMALL_ERROR">
        <source>The photograph is less than 100 pixels wide or high.</source>
        <extracomment>a check failed</extracomment>
        <translation>Das Foto ist weniger als 100 Pixel breit oder hoch.</translation>
    </message>
    <message id="IDS_RESOLUTION_DIFFERENT_ERROR">
        <source>The photograph is not of the same size as the others.</source>
        <extracomment>a check failed</extracomment>
        <translation>Das Foto ist nicht so groß wie die anderen.</translation>
    </message>
    <message id="IDS_LOADING">
        <source>Processing…</source>
        <extracomment>progress window</extracomment>
        <translation>Wird verarbeitet …</translation>
    </message>
    <message id="IDS_SAVE_FAILED">
        <source>The picture could not be saved.</source>
        <extracomment>failure warning</extracomment>
        <translation>Das Bild konnte nicht gespeichert werden.</translation>
    </message>
    <message id="IDS_SAVE_WARNING">
        <source>Do you want to save the picture?</source>
        <extracomment>message of the unsaved-changes sheet</extracomment>
        <translation>Möchten Sie das Bild speichern?</translation>
    </message>
    <message id="IDS_SAVE_PROMPT">
        <source>If you don’t save, your changes will be lost.</source>
        <extracomment>comment of the unsaved-changes sheet</extracomment>
        <translation>Wenn Sie nicht speichern, gehen Ihre Änderungen verloren.</translation>
    </message>
    <message id="IDS_SAVE">
        <source>Save</source>
        <extracomment>button</extracomment>
        <translation>Speichern</translation>
    </message>
    <message id="IDS_DONT_SAVE">
        <source>Don’t Save</source>
        <extracomment>button</extracomment>
        <translation>Nicht speichern</translation>
    </message>
    <message id="IDS_CANCEL">
        <source>Cancel</source>
        <extracomment>button</extracomment>
        <translation>Abbrechen</translation>
    </message>
    <message id="IDS_TONE_LENGTH">
        <source>Tone length</source>
        <extracomment>slider</extracomment>
        <translation>Tonumfang</translation>
    </message>
    <message id="IDS_TONE_SATURATION">
        <source>Tone saturation</source>
        <extracomment>slider</extracomment>
        <translation>Tonsättigung</translation>
    </message>
    <message id="IDS_BRIHGTNESS">
        <source>Brightness</source>
        <extracomment>slider</extracomment>
        <translation>Helligkeit</translation>
    </message>
    <message id="IDS_GHOST">
        <source>Ghost removal</source>
        <extracomment>slider</extracomment>
        <translation>Geisterbilder entfernen</translation>
    </message>
    <message id="IDS_SATURATION">
        <source>Saturation</source>
        <extracomment>slider</extracomment>
        <translation>Sättigung</translation>
    </message>
    <message id="IDS_CONTRAST">
        <source>Contrast</source>
        <extracomment>slider</extracomment>
        <translation>Kontrast</translation>
    </message>
    <message id="IDS_ORIGINAL">
        <source>Original</source>
        <extracomment>style</extracomment>
        <translation>Original</translation>
    </message>
    <message id="IDS_ART">
        <source>Art</source>
        <extracomment>style</extracomment>
        <translation>Künstlerisch</translation>
    </message>
    <message id="IDS_BW">
        <source>Black and white</source>
        <extracomment>style</extracomment>
        <translation>Schwarzweiß</translation>
    </message>
    <message id="IDS_OUTPUT_SIZE">
        <source>Output size:</source>
        <extracomment>before WIDTHxHEIGHT</extracomment>
        <translation>Ausgabegröße:</translation>
    </message>
    <message id="IDS_PIX">
        <source>pixels</source>
        <extracomment>after WIDTHxHEIGHT</extracomment>
        <translation>Pixel</translation>
    </message>
    <message id="IDS_MENU_ABOUT">
        <source>&amp;About %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>Ü&amp;ber %1</translation>
    </message>
    <message id="IDS_MENU_HIDE">
        <source>&amp;Hide %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>%1 aus&amp;blenden</translation>
    </message>
    <message id="IDS_MENU_HIDEOTHERS">
        <source>Hide &amp;Others</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Andere ausblenden</translation>
    </message>
    <message id="IDS_MENU_SHOWALL">
        <source>&amp;Show All</source>
        <extracomment>menu</extracomment>
        <translation>Alle &amp;einblenden</translation>
    </message>
    <message id="IDS_MENU_QUIT">
        <source>&amp;Quit %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>%1 b&amp;eenden</translation>
    </message>
    <message id="IDS_MENU_TILES">
        <source>&amp;Open Photographs…</source>
        <extracomment>menu</extracomment>
        <translation>Fotos ö&amp;ffnen …</translation>
    </message>
    <message id="IDS_MENU_SAVE">
        <source>&amp;Save As…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Speichern unter …</translation>
    </message>
    <message id="IDS_MENU_PAGESETUP">
        <source>Page Set&amp;up…</source>
        <extracomment>menu</extracomment>
        <translation>Seite ein&amp;richten …</translation>
    </message>
    <message id="IDS_MENU_PRINT">
        <source>&amp;Print…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Drucken …</translation>
    </message>
    <message id="IDS_MENU_ACTUALSIZE">
        <source>&amp;Actual Size</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Originalgröße</translation>
    </message>
    <message id="IDS_MENU_FITIN">
        <source>&amp;Fit to Window</source>
        <extracomment>menu</extracomment>
        <translation>An &amp;Fenster anpassen</translation>
    </message>
    <message id="IDS_MENU_ZOOMIN">
        <source>Zoom &amp;In</source>
        <extracomment>menu</extracomment>
        <translation>Ver&amp;größern</translation>
    </message>
    <message id="IDS_MENU_ZOOMOUT">
        <source>Zoom &amp;Out</source>
        <extracomment>menu</extracomment>
        <translation>Ver&amp;kleinern</translation>
    </message>
    <message id="IDS_MENU_HELP">
        <source>Online &amp;Guide</source>
        <extracomment>menu</extracomment>
        <translation>Online-&amp;Anleitung</translation>
    </message>
    <message id="IDS_MENU_FAQ">
        <source>&amp;Frequently Asked Questions</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Häufige Fragen</translation>
    </message>
    <message id="IDS_MENU_CCS">
        <source>&amp;Support</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Support</translation>
    </message>
    <message id="IDS_AC_DONTSHOWAGAIN">
        <source>Don’t show this again</source>
        <extracomment>check box of the guide</extracomment>
        <translation>Nicht mehr anzeigen</translation>
    </message>
    <message id="IDS_AC_Close">
        <source>Close</source>
        <extracomment>button of the guide</extracomment>
        <translation>Schließen</translation>
    </message>
    <message id="IDS_GUIDE_PAGE">
        <source>index.html</source>
        <extracomment>file in resources/guide</extracomment>
        <translation>index_de.html</translation>
    </message>
    <message id="IDS_MENUBAR_FILE">
        <source>&amp;File</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Datei</translation>
    </message>
    <message id="IDS_MENUBAR_VIEW">
        <source>&amp;View</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Ansicht</translation>
    </message>
    <message id="IDS_MENUBAR_WINDOW">
        <source>&amp;Window</source>
        <extracomment>menu bar</extracomment>
        <translation>F&amp;enster</translation>
    </message>
    <message id="IDS_MENUBAR_HELP">
        <source>&amp;Help</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Hilfe</translation>
    </message>
    <message id="IDS_MENU_SHOWGUIDE">
        <source>Show Guide at S&amp;tart</source>
        <extracomment>Help menu, with a check mark</extracomment>
        <translation>Anleitung beim Sta&amp;rt anzeigen</translation>
    </message>
    <message id="IDS_ABOUT_TEXT">
        <source>Version %1 · Three exposures, one picture. Free software under the GNU General Public License, version 3 or later.</source>
        <extracomment>about window, below the name; %1 is the version</extracomment>
        <translation>Version %1 · Drei Belichtungen, ein Bild. Freie Software unter der GNU General Public License, Version 3 oder neuer.</translation>
    </message>
    <message id="IDS_WINDOW_CLOSE">
        <source>Close</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Schließen</translation>
    </message>
    <message id="IDS_WINDOW_MINIMIZE">
        <source>Minimise</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Minimieren</translation>
    </message>
    <message id="IDS_WINDOW_ZOOM">
        <source>Maximise or restore</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Maximieren oder wiederherstellen</translation>
    </message>
    <message id="IDS_VALUE_IN_USE">
        <source>Value in use: %1</source>
        <extracomment>tooltip of a slider whose number shows an offset</extracomment>
        <translation>Verwendeter Wert: %1</translation>
    </message>
    <message id="IDS_SLIDER_RESET">
        <source>Double-click for the default: %1</source>
        <extracomment>tooltip of a slider; %1 is a number</extracomment>
        <translation>Doppelklick für den Standardwert: %1</translation>
    </message>
    <message id="IDS_GROUP_MERGE">
        <source>Merge</source>
        <extracomment>group of the four merge sliders</extracomment>
        <translation>Zusammenfügen</translation>
    </message>
    <message id="IDS_GROUP_EFFECT">
        <source>Colour effect</source>
        <extracomment>group of saturation, contrast and style</extracomment>
        <translation>Farbeffekt</translation>
    </message>
    <message id="IDS_STYLE">
        <source>Style</source>
        <extracomment>caption of the list of styles</extracomment>
        <translation>Stil</translation>
    </message>
    <message id="IDS_HISTOGRAM">
        <source>Histogram</source>
        <extracomment>caption</extracomment>
        <translation>Histogramm</translation>
    </message>
    <message id="IDS_PHOTOGRAPH">
        <source>Photograph %1</source>
        <extracomment>name of a thumbnail; %1 is 1, 2 or 3</extracomment>
        <translation>Foto %1</translation>
    </message>
    <message id="IDS_ADJUSTMENTS">
        <source>Adjustments</source>
        <extracomment>name of the side panel</extracomment>
        <translation>Anpassungen</translation>
    </message>
    <message id="IDS_HELP_DESCRIPTION">
        <source>Merges three photographs of one scene, taken at different exposures, into one picture.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Fügt drei unterschiedlich belichtete Fotos eines Motivs zu einem Bild zusammen.</translation>
    </message>
    <message id="IDS_HELP_PHOTOGRAPHS">
        <source>Three photographs to open: JPEG or camera RAW.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Drei zu öffnende Fotos: JPEG oder RAW.</translation>
    </message>
    <message id="IDS_HELP_NO_GUIDE">
        <source>Do not show the guide at start.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Die Anleitung beim Start nicht anzeigen.</translation>
    </message>
    <message id="IDS_PICTURE">
        <source>Picture</source>
        <extracomment>name of the picture view</extracomment>
        <translation>Bild</translation>
    </message>
    <message id="IDS_PICTURE_KEYS">
        <source>The arrow keys move the picture.</source>
        <extracomment>description of the picture view for screen readers</extracomment>
        <translation>Die Pfeiltasten verschieben das Bild.</translation>
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
        <translation>Der Arbeitsspeicher reicht nicht aus.</translation>
    </message>
    <message id="IDS_MERGE_TOO_FAR">
        <source>The exposures are too far apart to be merged.</source>
        <extracomment>status line</extracomment>
        <translation>Die Belichtungen liegen zu weit auseinander, um sie zusammenzufügen.</translation>
    </message>
    <message id="IDS_MERGE_UNALIGNED">
        <source>The photographs could not be aligned.</source>
        <extracomment>status line</extracomment>
        <translation>Die Fotos konnten nicht aneinander ausgerichtet werden.</translation>
    </message>
    <message id="IDS_MERGE_ORDER">
        <source>The exposures could not be put in order.</source>
        <extracomment>status line</extracomment>
        <translation>Die Belichtungen ließen sich nicht ordnen.</translation>
    </message>
    <message id="IDS_MERGE_FAILED">
        <source>The photographs could not be merged.</source>
        <extracomment>status line</extracomment>
        <translation>Die Fotos konnten nicht zusammengefügt werden.</translation>
    </message>
    <message id="IDS_MERGE_FALLBACK">
        <source>The exposures could not be merged; the picture shows one of them.</source>
        <extracomment>status line</extracomment>
        <translation>Die Belichtungen ließen sich nicht zusammenfügen; das Bild zeigt eine von ihnen.</translation>
    </message>
    <message id="IDS_MERGE_LEFT_OUT">
        <source>It does not show what the others show and was left out.</source>
        <extracomment>status line, behind the name of a photograph</extracomment>
        <translation>Es zeigt nicht dasselbe wie die anderen und wurde weggelassen.</translation>
    </message>
    <message id="IDS_PAGE_NOT_OPENED">
        <source>%1 could not be opened in a browser.</source>
        <extracomment>status line; %1 is the address of a page</extracomment>
        <translation>%1 konnte nicht in einem Browser geöffnet werden.</translation>
    </message>
    <message id="IDS_RUN_FAILED">
        <source>This could not be done.</source>
        <extracomment>status line</extracomment>
        <translation>Das ist nicht gelungen.</translation>
    </message>
    <message id="IDS_MERGE_AGAIN">
        <source>Merge the photographs again first.</source>
        <extracomment>status line</extracomment>
        <translation>Fügen Sie die Fotos zuerst neu zusammen.</translation>
    </message>
    <message id="IDS_MERGING">
        <source>Merging…</source>
        <extracomment>progress window</extracomment>
        <translation>Wird zusammengefügt …</translation>
    </message>
    <message id="IDS_EMPTY_TITLE">
        <source>Three photographs, one picture</source>
        <extracomment>window without a picture</extracomment>
        <translation>Drei Fotos, ein Bild</translation>
    </message>
    <message id="IDS_EMPTY_HINT">
        <source>Drop a dark, a middle and a bright exposure of one scene here</source>
        <extracomment>window without a picture</extracomment>
        <translation>Ziehen Sie eine dunkle, eine mittlere und eine helle Belichtung eines Motivs hierher</translation>
    </message>
    <message id="IDS_OPEN">
        <source>Open Photographs…</source>
        <extracomment>button of the window without a picture</extracomment>
        <translation>Fotos öffnen …</translation>
    </message>
    <message id="IDS_NOT_A_PHOTOGRAPH">
        <source>“%1” is neither a JPEG nor a camera RAW file.</source>
        <extracomment>%1 is a file</extracomment>
        <translation>„%1“ ist weder eine JPEG- noch eine RAW-Datei.</translation>
    </message>
    <message id="IDS_FILTER_PHOTOGRAPHS">
        <source>Photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Fotos</translation>
    </message>
    <message id="IDS_FILTER_JPEG">
        <source>JPEG photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>JPEG-Fotos</translation>
    </message>
    <message id="IDS_FILTER_RAW">
        <source>Camera RAW photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>RAW-Fotos</translation>
    </message>
    <message id="IDS_ZOOM_OUT">
        <source>Zoom out</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Verkleinern</translation>
    </message>
    <message id="IDS_ZOOM_IN">
        <source>Zoom in</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Vergrößern</translation>
    </message>
    <message id="IDS_ZOOM_FIT">
        <source>Fit to window</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>An Fenster anpassen</translation>
    </message>
    <message id="IDS_ZOOM_FIT_SHORT">
        <source>Fit</source>
        <extracomment>zoom segment, face</extracomment>
        <translation>Ganz</translation>
    </message>
    <message id="IDS_ZOOM_ACTUAL">
        <source>Actual size</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Originalgröße</translation>
    </message>
    <message id="IDS_ZOOM_PERCENT">
        <source>%1%</source>
        <extracomment>%1 is a number</extracomment>
        <translation>%1 %</translation>
    </message>
    <message id="IDS_SAVING">
        <source>Saving…</source>
        <extracomment>progress window</extracomment>
        <translation>Wird gespeichert …</translation>
    </message>
    <message id="IDS_SAVED_AS">
        <source>Saved as %1</source>
        <extracomment>status line; %1 is a file</extracomment>
        <translation>Gespeichert als %1</translation>
    </message>
    <message id="IDS_RESCUED">
        <source>The unsaved picture was rescued: %1</source>
        <extracomment>status line at the next start, and on the terminal; %1 is a file</extracomment>
        <translation>Das nicht gespeicherte Bild wurde gerettet: %1</translation>
    </message>
    <message id="IDS_SAVE_OVER_PHOTOGRAPH">
        <source>This is one of the three photographs. Choose another name.</source>
        <extracomment>alert on the save panel</extracomment>
        <translation>Das ist eines der drei Fotos. Wählen Sie einen anderen Namen.</translation>
    </message>
    <message id="IDS_SAVE_TYPE">
        <source>Type:</source>
        <extracomment>save options</extracomment>
        <translation>Format:</translation>
    </message>
    <message id="IDS_SAVE_QUALITY">
        <source>Quality:</source>
        <extracomment>save options</extracomment>
        <translation>Qualität:</translation>
    </message>
    <message id="IDS_SAVE_COMPRESSION">
        <source>Compression:</source>
        <extracomment>save options</extracomment>
        <translation>Komprimierung:</translation>
    </message>
    <message id="IDS_SAVE_UNCOMPRESSED">
        <source>None</source>
        <extracomment>save options, compression of a TIFF</extracomment>
        <translation>Keine</translation>
    </message>
    <message id="IDS_SAVE_STANDARD">
        <source>The standard quality and compression are used.</source>
        <extracomment>save options</extracomment>
        <translation>Standardqualität und -komprimierung werden verwendet.</translation>
    </message>
    <message id="IDS_DISK_FULL">
        <source>The disk is full.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>Der Datenträger ist voll.</translation>
    </message>
    <message id="IDS_DISK_READONLY">
        <source>The disk can only be read.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>Der Datenträger ist schreibgeschützt.</translation>
    </message>
    <message id="IDS_NO_PERMISSION">
        <source>You may not write to this folder.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>Sie dürfen nicht in diesen Ordner schreiben.</translation>
    </message>
    <message id="IDS_FOLDER_GONE">
        <source>The folder no longer exists.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>Der Ordner existiert nicht mehr.</translation>
    </message>
    <message id="IDS_PRINTING">
        <source>Printing…</source>
        <extracomment>progress window</extracomment>
        <translation>Wird gedruckt …</translation>
    </message>
    <message id="IDS_PRINT_FAILED">
        <source>The picture could not be printed.</source>
        <extracomment>status line</extracomment>
        <translation>Das Bild konnte nicht gedruckt werden.</translation>
    </message>
    <message id="IDS_SHARE">
        <source>Share</source>
        <extracomment>button</extracomment>
        <translation>Teilen</translation>
    </message>
    <message id="IDS_SHARE_EMAIL">
        <source>Send by E-Mail…</source>
        <extracomment>share menu</extracomment>
        <translation>Per E-Mail senden …</translation>
    </message>
    <message id="IDS_SHARE_OPEN_WITH">
        <source>Open with Another Program…</source>
        <extracomment>share menu</extracomment>
        <translation>Mit anderem Programm öffnen …</translation>
    </message>
    <message id="IDS_SHARE_COPY">
        <source>Copy Picture</source>
        <extracomment>share menu</extracomment>
        <translation>Bild kopieren</translation>
    </message>
    <message id="IDS_SHARE_SHOW_IN_FOLDER">
        <source>Show in Folder</source>
        <extracomment>share menu</extracomment>
        <translation>Im Ordner anzeigen</translation>
    </message>
    <message id="IDS_COPIED">
        <source>Picture copied</source>
        <extracomment>status line</extracomment>
        <translation>Bild kopiert</translation>
    </message>
    <message id="IDS_SHARING">
        <source>Preparing to share…</source>
        <extracomment>progress window</extracomment>
        <translation>Wird zum Teilen vorbereitet …</translation>
    </message>
    <message id="IDS_SHARE_FAILED">
        <source>The picture could not be shared.</source>
        <extracomment>status line</extracomment>
        <translation>Das Bild konnte nicht geteilt werden.</translation>
    </message>
</context>
</TS>
