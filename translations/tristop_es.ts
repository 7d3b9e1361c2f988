<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: GPL-3.0-or-later -->
<TS version="2.1" language="es">
<context>
    <name></name>
    <message id="IDS_MANY_FILES">
        <source>Choose three photographs of one scene: dark, middle and bright</source>
        <extracomment>title of the open panel</extracomment>
        <translation>Elija tres fotografías de la misma escena: oscura, media y clara</translation>
    </message>
    <message id="IDS_TOO_MANY_ERROR">
        <source>Choose exactly three photographs.</source>
        <extracomment>alert on the open panel</extracomment>
        <translation>Elija exactamente tres fotografías.</translation>
    </message>
    <message id="IDS_OK">
        <source>OK</source>
        <extracomment>button</extracomment>
        <translation>Aceptar</translation>
    </message>
    <message id="IDS_LOAD_FAILED">
        <source>The photograph could not be read.</source>
        <extracomment>a check failed</extracomment>
        <translation>No se pudo leer la fotografía.</translation>
    </message>
    <message id="IDS_RESOLUTION_SMALL_ERROR">
        <source>The photograph is less than 100 pixels wide or high.</source>
        <extracomment>a check failed</extracomment>
        <translation>La fotografía mide menos de 100 píxeles de ancho o de alto.</translation>
    </message>
    <message id="IDS_RESOLUTION_DIFFERENT_ERROR">
        <source>The photograph is not of the same size as the others.</source>
        <extracomment>a check failed</extracomment>
        <translation>La fotografía no tiene el mismo tamaño que las demás.</translation>
    </message>
    <message id="IDS_LOADING">
        <source>Processing…</source>
        <extracomment>progress window</extracomment>
        <translation>Procesando…</translation>
    </message>
    <message id="IDS_SAVE_FAILED">
        <source>The picture could not be saved.</source>
        <extracomment>failure warning</extracomment>
        <translation>No se pudo guardar la imagen.</translation>
    </message>
    <message id="IDS_SAVE_WARNING">
        <source>Do you want to save the picture?</source>
        <extracomment>message of the unsaved-changes sheet</extracomment>
        <translation>¿Desea guardar la imagen?</translation>
    </message>
    <message id="IDS_SAVE_PROMPT">
        <source>If you don’t save, your changes will be lost.</source>
        <extracomment>comment of the unsaved-changes sheet</extracomment>
        <translation>Si no la guarda, se perderán los cambios.</translation>
    </message>
    <message id="IDS_SAVE">
        <source>Save</source>
        <extracomment>button</extracomment>
        <translation>Guardar</translation>
    </message>
    <message id="IDS_DONT_SAVE">
        <source>Don’t Save</source>
        <extracomment>button</extracomment>
        <translation>No guardar</translation>
    </message>
    <message id="IDS_CANCEL">
        <source>Cancel</source>
        <extracomment>button</extracomment>
        <translation>Cancelar</translation>
    </message>
    <message id="IDS_TONE_LENGTH">
        <source>Tone length</source>
        <extracomment>slider</extracomment>
        <translation>Rango tonal</translation>
    </message>
    <message id="IDS_TONE_SATURATION">
        <source>Tone saturation</source>
        <extracomment>slider</extracomment>
        <translation>Saturación tonal</translation>
    </message>
    <message id="IDS_BRIHGTNESS">
        <source>Brightness</source>
        <extracomment>slider</extracomment>
        <translation>Brillo</translation>
    </message>
    <message id="IDS_GHOST">
        <source>Ghost removal</source>
        <extracomment>slider</extracomment>
        <translation>Eliminar fantasmas</translation>
    </message>
    <message id="IDS_SATURATION">
        <source>Saturation</source>
        <extracomment>slider</extracomment>
        <translation>Saturación</translation>
    </message>
    <message id="IDS_CONTRAST">
        <source>Contrast</source>
        <extracomment>slider</extracomment>
        <translation>Contraste</translation>
    </message>
    <message id="IDS_ORIGINAL">
        <source>Original</source>
        <extracomment>style</extracomment>
        <translation>Original</translation>
    </message>
    <message id="IDS_ART">
        <source>Art</source>
        <extracomment>style</extracomment>
        <translation>Artístico</translation>
    </message>
    <message id="IDS_BW">
        <source>Black and white</source>
        <extracomment>style</extracomment>
        <translation>Blanco y negro</translation>
    </message>
    <message id="IDS_OUTPUT_SIZE">
        <source>Output size:</source>
        <extracomment>before WIDTHxHEIGHT</extracomment>
        <translation>Tamaño de salida:</translation>
    </message>
    <message id="IDS_PIX">
        <source>pixels</source>
        <extracomment>after WIDTHxHEIGHT</extracomment>
        <translation>píxeles</translation>
    </message>
    <message id="IDS_MENU_ABOUT">
        <source>&amp;About %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>&amp;Acerca de %1</translation>
    </message>
    <message id="IDS_MENU_HIDE">
        <source>&amp;Hide %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>&amp;Ocultar %1</translation>
    </message>
    <message id="IDS_MENU_HIDEOTHERS">
        <source>Hide &amp;Others</source>
        <extracomment>menu</extracomment>
        <translation>Ocultar o&amp;tros</translation>
    </message>
    <message id="IDS_MENU_SHOWALL">
        <source>&amp;Show All</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Mostrar todo</translation>
    </message>
    <message id="IDS_MENU_QUIT">
        <source>&amp;Quit %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>&amp;Salir de %1</translation>
    </message>
    <message id="IDS_MENU_TILES">
        <source>&amp;Open Photographs…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Abrir fotografías…</translation>
    </message>
    <message id="IDS_MENU_SAVE">
        <source>&amp;Save As…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Guardar como…</translation>
    </message>
    <message id="IDS_MENU_PAGESETUP">
        <source>Page Set&amp;up…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Configurar página…</translation>
    </message>
    <message id="IDS_MENU_PRINT">
        <source>&amp;Print…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Imprimir…</translation>
    </message>
    <message id="IDS_MENU_ACTUALSIZE">
        <source>&amp;Actual Size</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Tamaño real</translation>
    </message>
    <message id="IDS_MENU_FITIN">
        <source>&amp;Fit to Window</source>
        <extracomment>menu</extracomment>
        <translation>A&amp;justar a la ventana</translation>
    </message>
    <message id="IDS_MENU_ZOOMIN">
        <source>Zoom &amp;In</source>
        <extracomment>menu</extracomment>
        <translation>A&amp;mpliar</translation>
    </message>
    <message id="IDS_MENU_ZOOMOUT">
        <source>Zoom &amp;Out</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Reducir</translation>
    </message>
    <message id="IDS_MENU_HELP">
        <source>Online &amp;Guide</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Guía en línea</translation>
    </message>
    <message id="IDS_MENU_FAQ">
        <source>&amp;Frequently Asked Questions</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Preguntas frecuentes</translation>
    </message>
    <message id="IDS_MENU_CCS">
        <source>&amp;Support</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Soporte técnico</translation>
    </message>
    <message id="IDS_AC_DONTSHOWAGAIN">
        <source>Don’t show this again</source>
        <extracomment>check box of the guide</extracomment>
        <translation>No volver a mostrar</translation>
    </message>
    <message id="IDS_AC_Close">
        <source>Close</source>
        <extracomment>button of the guide</extracomment>
        <translation>Cerrar</translation>
    </message>
    <message id="IDS_GUIDE_PAGE">
        <source>index.html</source>
        <extracomment>file in resources/guide</extracomment>
        <translation>index_es.html</translation>
    </message>
    <message id="IDS_MENUBAR_FILE">
        <source>&amp;File</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Archivo</translation>
    </message>
    <message id="IDS_MENUBAR_VIEW">
        <source>&amp;View</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Ver</translation>
    </message>
    <message id="IDS_MENUBAR_WINDOW">
        <source>&amp;Window</source>
        <extracomment>menu bar</extracomment>
        <translation>Ve&amp;ntana</translation>
    </message>
    <message id="IDS_MENUBAR_HELP">
        <source>&amp;Help</source>
        <extracomment>menu bar</extracomment>
        <translation>A&amp;yuda</translation>
    </message>
    <message id="IDS_MENU_SHOWGUIDE">
        <source>Show Guide at S&amp;tart</source>
        <extracomment>Help menu, with a check mark</extracomment>
        <translation>&amp;Mostrar la guía al iniciar</translation>
    </message>
    <message id="IDS_ABOUT_TEXT">
        <source>Version %1 · Three exposures, one picture. Free software under the GNU General Public License, version 3 or later.</source>
        <extracomment>about window, below the name; %1 is the version</extracomment>
        <translation>Versión %1 · Tres exposiciones, una imagen. Software libre bajo la Licencia Pública General de GNU, versión 3 o posterior.</translation>
    </message>
    <message id="IDS_WINDOW_CLOSE">
        <source>Close</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Cerrar</translation>
    </message>
    <message id="IDS_WINDOW_MINIMIZE">
        <source>Minimise</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Minimizar</translation>
    </message>
    <message id="IDS_WINDOW_ZOOM">
        <source>Maximise or restore</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Maximizar o restaurar</translation>
    </message>
    <message id="IDS_VALUE_IN_USE">
        <source>Value in use: %1</source>
        <extracomment>tooltip of a slider whose number shows an offset</extracomment>
        <translation>Valor en uso: %1</translation>
    </message>
    <message id="IDS_SLIDER_RESET">
        <source>Double-click for the default: %1</source>
        <extracomment>tooltip of a slider; %1 is a number</extracomment>
        <translation>Doble clic para el valor predeterminado: %1</translation>
    </message>
    <message id="IDS_GROUP_MERGE">
        <source>Merge</source>
        <extracomment>group of the four merge sliders</extracomment>
        <translation>Fusión</translation>
    </message>
    <message id="IDS_GROUP_EFFECT">
        <source>Colour effect</source>
        <extracomment>group of saturation, contrast and style</extracomment>
        <translation>Efecto de color</translation>
    </message>
    <message id="IDS_STYLE">
        <source>Style</source>
        <extracomment>caption of the list of styles</extracomment>
        <translation>Estilo</translation>
    </message>
    <message id="IDS_HISTOGRAM">
        <source>Histogram</source>
        <extracomment>caption</extracomment>
        <translation>Histograma</translation>
    </message>
    <message id="IDS_PHOTOGRAPH">
        <source>Photograph %1</source>
        <extracomment>name of a thumbnail; %1 is 1, 2 or 3</extracomment>
        <translation>Fotografía %1</translation>
    </message>
    <message id="IDS_ADJUSTMENTS">
        <source>Adjustments</source>
        <extracomment>name of the side panel</extracomment>
        <translation>Ajustes</translation>
    </message>
    <message id="IDS_HELP_DESCRIPTION">
        <source>Merges three photographs of one scene, taken at different exposures, into one picture.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Fusiona en una imagen tres fotografías de la misma escena tomadas con exposiciones distintas.</translation>
    </message>
    <message id="IDS_HELP_PHOTOGRAPHS">
        <source>Three photographs to open: JPEG or camera RAW.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Tres fotografías que abrir: JPEG o RAW.</translation>
    </message>
    <message id="IDS_HELP_NO_GUIDE">
        <source>Do not show the guide at start.</source>
        <extracomment>tristop --help</extracomment>
        <translation>No mostrar la guía al iniciar.</translation>
    </message>
    <message id="IDS_PICTURE">
        <source>Picture</source>
        <extracomment>name of the picture view</extracomment>
        <translation>Imagen</translation>
    </message>
    <message id="IDS_PICTURE_KEYS">
        <source>The arrow keys move the picture.</source>
        <extracomment>description of the picture view for screen readers</extracomment>
        <translation>Las teclas de flecha mueven la imagen.</translation>
    </message>
    <message id="IDS_STATUS">
        <source>Status</source>
        <extracomment>name of the status line for screen readers</extracomment>
        <translation>Estado</translation>
    </message>
    <message id="IDS_FILE_REASON">
        <source>%1: %2</source>
        <extracomment>status line; %1 is a file, %2 a sentence</extracomment>
        <translation>%1: %2</translation>
    </message>
    <message id="IDS_NO_MEMORY">
        <source>There is not enough memory.</source>
        <extracomment>status line</extracomment>
        <translation>No hay suficiente memoria.</translation>
    </message>
    <message id="IDS_MERGE_TOO_FAR">
        <source>The exposures are too far apart to be merged.</source>
        <extracomment>status line</extracomment>
        <translation>Las exposiciones están demasiado alejadas para fusionarlas.</translation>
    </message>
    <message id="IDS_MERGE_UNALIGNED">
        <source>The photographs could not be aligned.</source>
        <extracomment>status line</extracomment>
        <translation>No se pudieron alinear las fotografías.</translation>
    </message>
    <message id="IDS_MERGE_ORDER">
        <source>The exposures could not be put in order.</source>
        <extracomment>status line</extracomment>
        <translation>No se pudieron ordenar las exposiciones.</translation>
    </message>
    <message id="IDS_MERGE_FAILED">
        <source>The photographs could not be merged.</source>
        <extracomment>status line</extracomment>
        <translation>No se pudieron fusionar las fotografías.</translation>
    </message>
    <message id="IDS_MERGE_FALLBACK">
        <source>The exposures could not be merged; the picture shows one of them.</source>
        <extracomment>status line</extracomment>
        <translation>No se pudieron fusionar las exposiciones; la imagen muestra una de ellas.</translation>
    </message>
    <message id="IDS_MERGE_LEFT_OUT">
        <source>It does not show what the others show and was left out.</source>
        <extracomment>status line, behind the name of a photograph</extracomment>
        <translation>No muestra lo mismo que las demás y se ha dejado fuera.</translation>
    </message>
    <message id="IDS_PAGE_NOT_OPENED">
        <source>%1 could not be opened in a browser.</source>
        <extracomment>status line; %1 is the address of a page</extracomment>
        <translation>No se pudo abrir %1 en un navegador.</translation>
    </message>
    <message id="IDS_RUN_FAILED">
        <source>This could not be done.</source>
        <extracomment>status line</extracomment>
        <translation>La operación ha fallado.</translation>
    </message>
    <message id="IDS_MERGE_AGAIN">
        <source>Merge the photographs again first.</source>
        <extracomment>status line</extracomment>
        <translation>Vuelva a fusionar antes las fotografías.</translation>
    </message>
    <message id="IDS_MERGING">
        <source>Merging…</source>
        <extracomment>progress window</extracomment>
        <translation>Fusionando…</translation>
    </message>
    <message id="IDS_EMPTY_TITLE">
        <source>Three photographs, one picture</source>
        <extracomment>window without a picture</extracomment>
        <translation>Tres fotografías, una imagen</translation>
    </message>
    <message id="IDS_EMPTY_HINT">
        <source>Drop a dark, a middle and a bright exposure of one scene here</source>
        <extracomment>window without a picture</extracomment>
        <translation>Suelte aquí una exposición oscura, una media y una clara de la misma escena</translation>
    </message>
    <message id="IDS_OPEN">
        <source>Open Photographs…</source>
        <extracomment>button of the window without a picture</extracomment>
        <translation>Abrir fotografías…</translation>
    </message>
    <message id="IDS_NOT_A_PHOTOGRAPH">
        <source>“%1” is neither a JPEG nor a camera RAW file.</source>
        <extracomment>%1 is a file</extracomment>
        <translation>«%1» no es un archivo JPEG ni RAW.</translation>
    </message>
    <message id="IDS_FILTER_PHOTOGRAPHS">
        <source>Photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Fotografías</translation>
    </message>
    <message id="IDS_FILTER_JPEG">
        <source>JPEG photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Fotografías JPEG</translation>
    </message>
    <message id="IDS_FILTER_RAW">
        <source>Camera RAW photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Fotografías RAW</translation>
    </message>
    <message id="IDS_ZOOM_OUT">
        <source>Zoom out</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Reducir</translation>
    </message>
    <message id="IDS_ZOOM_IN">
        <source>Zoom in</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Ampliar</translation>
    </message>
    <message id="IDS_ZOOM_FIT">
        <source>Fit to window</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Ajustar a la ventana</translation>
    </message>
    <message id="IDS_ZOOM_FIT_SHORT">
        <source>Fit</source>
        <extracomment>zoom segment, face</extracomment>
        <translation>Todo</translation>
    </message>
    <message id="IDS_ZOOM_ACTUAL">
        <source>Actual size</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Tamaño real</translation>
    </message>
    <message id="IDS_ZOOM_PERCENT">
        <source>%1%</source>
        <extracomment>%1 is a number</extracomment>
        <translation>%1 %</translation>
    </message>
    <message id="IDS_SAVING">
        <source>Saving…</source>
        <extracomment>progress window</extracomment>
        <translation>Guardando…</translation>
    </message>
    <message id="IDS_SAVED_AS">
        <source>Saved as %1</source>
        <extracomment>status line; %1 is a file</extracomment>
        <translation>Guardado como %1</translation>
    </message>
    <message id="IDS_RESCUED">
        <source>The unsaved picture was rescued: %1</source>
        <extracomment>status line at the next start, and on the terminal; %1 is a file</extracomment>
        <translation>La imagen no guardada se ha recuperado: %1</translation>
    </message>
    <message id="IDS_SAVE_OVER_PHOTOGRAPH">
        <source>This is one of the three photographs. Choose another name.</source>
        <extracomment>alert on the save panel</extracomment>
        <translation>Es una de las tres fotografías. Elija otro nombre.</translation>
    </message>
    <message id="IDS_SAVE_TYPE">
        <source>Type:</source>
        <extracomment>save options</extracomment>
        <translation>Formato:</translation>
    </message>
    <message id="IDS_SAVE_QUALITY">
        <source>Quality:</source>
        <extracomment>save options</extracomment>
        <translation>Calidad:</translation>
    </message>
    <message id="IDS_SAVE_COMPRESSION">
        <source>Compression:</source>
        <extracomment>save options</extracomment>
        <translation>Compresión:</translation>
    </message>
    <message id="IDS_SAVE_UNCOMPRESSED">
        <source>None</source>
        <extracomment>save options, compression of a TIFF</extracomment>
        <translation>Ninguna</translation>
    </message>
    <message id="IDS_SAVE_STANDARD">
        <source>The standard quality and compression are used.</source>
        <extracomment>save options</extracomment>
        <translation>Se usan la calidad y la compresión estándar.</translation>
    </message>
    <message id="IDS_DISK_FULL">
        <source>The disk is full.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>El disco está lleno.</translation>
    </message>
    <message id="IDS_DISK_READONLY">
        <source>The disk can only be read.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>El disco es de solo lectura.</translation>
    </message>
    <message id="IDS_NO_PERMISSION">
        <source>You may not write to this folder.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>No tiene permiso para escribir en esta carpeta.</translation>
    </message>
    <message id="IDS_FOLDER_GONE">
        <source>The folder no longer exists.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>La carpeta ya no existe.</translation>
    </message>
    <message id="IDS_PRINTING">
        <source>Printing…</source>
        <extracomment>progress window</extracomment>
        <translation>Imprimiendo…</translation>
    </message>
    <message id="IDS_PRINT_FAILED">
        <source>The picture could not be printed.</source>
        <extracomment>status line</extracomment>
        <translation>No se pudo imprimir la imagen.</translation>
    </message>
    <message id="IDS_SHARE">
        <source>Share</source>
        <extracomment>button</extracomment>
        <translation>Compartir</translation>
    </message>
    <message id="IDS_SHARE_EMAIL">
        <source>Send by E-Mail…</source>
        <extracomment>share menu</extracomment>
        <translation>Enviar por correo…</translation>
    </message>
    <message id="IDS_SHARE_OPEN_WITH">
        <source>Open with Another Program…</source>
        <extracomment>share menu</extracomment>
        <translation>Abrir con otro programa…</translation>
    </message>
    <message id="IDS_SHARE_COPY">
        <source>Copy Picture</source>
        <extracomment>share menu</extracomment>
        <translation>Copiar imagen</translation>
    </message>
    <message id="IDS_SHARE_SHOW_IN_FOLDER">
        <source>Show in Folder</source>
        <extracomment>share menu</extracomment>
        <translation>Mostrar en la carpeta</translation>
    </message>
    <message id="IDS_COPIED">
        <source>Picture copied</source>
        <extracomment>status line</extracomment>
        <translation>Imagen copiada</translation>
    </message>
    <message id="IDS_SHARING">
        <source>Preparing to share…</source>
        <extracomment>progress window</extracomment>
        <translation>Preparando para compartir…</translation>
    </message>
    <message id="IDS_SHARE_FAILED">
        <source>The picture could not be shared.</source>
        <extracomment>status line</extracomment>
        <translation>No se pudo compartir la imagen.</translation>
    </message>
</context>
</TS>
