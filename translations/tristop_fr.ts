<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: GPL-3.0-or-later -->
<TS version="2.1" language="fr">
<context>
    <name></name>
    <message id="IDS_MANY_FILES">
        <source>Choose three photographs of one scene: dark, middle and bright</source>
        <extracomment>title of the open panel</extracomment>
        <translation>Choisissez trois photos d’une même scène : sombre, moyenne et claire</translation>
    </message>
    <message id="IDS_TOO_MANY_ERROR">
        <source>Choose exactly three photographs.</source>
        <extracomment>alert on the open panel</extracomment>
        <translation>Choisissez exactement trois photos.</translation>
    </message>
    <message id="IDS_OK">
        <source>OK</source>
        <extracomment>button</extracomment>
        <translation>OK</translation>
    </message>
    <message id="IDS_LOAD_FAILED">
        <source>The photograph could not be read.</source>
        <extracomment>a check failed</extracomment>
        <translation>La photo n’a pas pu être lue.</translation>
    </message>
    <message id="IDS_RESOLUTION_SMALL_ERROR">
        <source>The photograph is less than 100 pixels wide or high.</source>
        <extracomment>a check failed</extracomment>
        <translation>La photo mesure moins de 100 pixels en largeur ou en hauteur.</translation>
    </message>
    <message id="IDS_RESOLUTION_DIFFERENT_ERROR">
        <source>The photograph is not of the same size as the others.</source>
        <extracomment>a check failed</extracomment>
        <translation>La photo n’a pas les mêmes dimensions que les autres.</translation>
    </message>
    <message id="IDS_LOADING">
        <source>Processing…</source>
        <extracomment>progress window</extracomment>
        <translation>Traitement en cours…</translation>
    </message>
    <message id="IDS_SAVE_FAILED">
        <source>The picture could not be saved.</source>
        <extracomment>failure warning</extracomment>
        <translation>L’image n’a pas pu être enregistrée.</translation>
    </message>
    <message id="IDS_SAVE_WARNING">
        <source>Do you want to save the picture?</source>
        <extracomment>message of the unsaved-changes sheet</extracomment>
        <translation>Voulez-vous enregistrer l’image ?</translation>
    </message>
    <message id="IDS_SAVE_PROMPT">
        <source>If you don’t save, your changes will be lost.</source>
        <extracomment>comment of the unsaved-changes sheet</extracomment>
        <translation>Si vous n’enregistrez pas, vos modifications seront perdues.</translation>
    </message>
    <message id="IDS_SAVE">
        <source>Save</source>
        <extracomment>button</extracomment>
        <translation>Enregistrer</translation>
    </message>
    <message id="IDS_DONT_SAVE">
        <source>Don’t Save</source>
        <extracomment>button</extracomment>
        <translation>Ne pas enregistrer</translation>
    </message>
    <message id="IDS_CANCEL">
        <source>Cancel</source>
        <extracomment>button</extracomment>
        <translation>Annuler</translation>
    </message>
    <message id="IDS_TONE_LENGTH">
        <source>Tone length</source>
        <extracomment>slider</extracomment>
        <translation>Étendue tonale</translation>
    </message>
    <message id="IDS_TONE_SATURATION">
        <source>Tone saturation</source>
        <extracomment>slider</extracomment>
        <translation>Saturation tonale</translation>
    </message>
    <message id="IDS_BRIHGTNESS">
        <source>Brightness</source>
        <extracomment>slider</extracomment>
        <translation>Luminosité</translation>
    </message>
    <message id="IDS_GHOST">
        <source>Ghost removal</source>
        <extracomment>slider</extracomment>
        <translation>Correction des fantômes</translation>
    </message>
    <message id="IDS_SATURATION">
        <source>Saturation</source>
        <extracomment>slider</extracomment>
        <translation>Saturation</translation>
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
        <translation>Artistique</translation>
    </message>
    <message id="IDS_BW">
        <source>Black and white</source>
        <extracomment>style</extracomment>
        <translation>Noir et blanc</translation>
    </message>
    <message id="IDS_OUTPUT_SIZE">
        <source>Output size:</source>
        <extracomment>before WIDTHxHEIGHT</extracomment>
        <translation>Taille de sortie :</translation>
    </message>
    <message id="IDS_PIX">
        <source>pixels</source>
        <extracomment>after WIDTHxHEIGHT</extracomment>
        <translation>pixels</translation>
    </message>
    <message id="IDS_MENU_ABOUT">
        <source>&amp;About %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>À &amp;propos de %1</translation>
    </message>
    <message id="IDS_MENU_HIDE">
        <source>&amp;Hide %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>&amp;Masquer %1</translation>
    </message>
    <message id="IDS_MENU_HIDEOTHERS">
        <source>Hide &amp;Others</source>
        <extracomment>menu</extracomment>
        <translation>Masquer les &amp;autres</translation>
    </message>
    <message id="IDS_MENU_SHOWALL">
        <source>&amp;Show All</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Tout afficher</translation>
    </message>
    <message id="IDS_MENU_QUIT">
        <source>&amp;Quit %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>&amp;Quitter %1</translation>
    </message>
    <message id="IDS_MENU_TILES">
        <source>&amp;Open Photographs…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Ouvrir des photos…</translation>
    </message>
    <message id="IDS_MENU_SAVE">
        <source>&amp;Save As…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Enregistrer sous…</translation>
    </message>
    <message id="IDS_MENU_PAGESETUP">
        <source>Page Set&amp;up…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Mise en page…</translation>
    </message>
    <message id="IDS_MENU_PRINT">
        <source>&amp;Print…</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Imprimer…</translation>
    </message>
    <message id="IDS_MENU_ACTUALSIZE">
        <source>&amp;Actual Size</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Taille réelle</translation>
    </message>
    <message id="IDS_MENU_FITIN">
        <source>&amp;Fit to Window</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Ajuster à la fenêtre</translation>
    </message>
    <message id="IDS_MENU_ZOOMIN">
        <source>Zoom &amp;In</source>
        <extracomment>menu</extracomment>
        <translation>Zoom a&amp;vant</translation>
    </message>
    <message id="IDS_MENU_ZOOMOUT">
        <source>Zoom &amp;Out</source>
        <extracomment>menu</extracomment>
        <translation>Zoom a&amp;rrière</translation>
    </message>
    <message id="IDS_MENU_HELP">
        <source>Online &amp;Guide</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Guide en ligne</translation>
    </message>
    <message id="IDS_MENU_FAQ">
        <source>&amp;Frequently Asked Questions</source>
        <extracomment>menu</extracomment>
        <translation>&amp;Questions fréquentes</translation>
    </message>
    <message id="IDS_MENU_CCS">
        <source>&amp;Support</source>
        <extracomment>menu</extracomment>
        <translation>Assi&amp;stance</translation>
    </message>
    <message id="IDS_AC_DONTSHOWAGAIN">
        <source>Don’t show this again</source>
        <extracomment>check box of the guide</extracomment>
        <translation>Ne plus afficher</translation>
    </message>
    <message id="IDS_AC_Close">
        <source>Close</source>
        <extracomment>button of the guide</extracomment>
        <translation>Fermer</translation>
    </message>
    <message id="IDS_GUIDE_PAGE">
        <source>index.html</source>
        <extracomment>file in resources/guide</extracomment>
        <translation>index_fr.html</translation>
    </message>
    <message id="IDS_MENUBAR_FILE">
        <source>&amp;File</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Fichier</translation>
    </message>
    <message id="IDS_MENUBAR_VIEW">
        <source>&amp;View</source>
        <extracomment>menu bar</extracomment>
        <translation>&amp;Affichage</translation>
    </message>
    <message id="IDS_MENUBAR_WINDOW">
        <source>&amp;Window</source>
        <extracomment>menu bar</extracomment>
        <translation>Fe&amp;nêtre</translation>
    </message>
    <message id="IDS_MENUBAR_HELP">
        <source>&amp;Help</source>
        <extracomment>menu bar</extracomment>
        <translation>Ai&amp;de</translation>
    </message>
    <message id="IDS_MENU_SHOWGUIDE">
        <source>Show Guide at S&amp;tart</source>
        <extracomment>Help menu, with a check mark</extracomment>
        <translation>Afficher le guide au &amp;démarrage</translation>
    </message>
    <message id="IDS_ABOUT_TEXT">
        <source>Version %1 · Three exposures, one picture. Free software under the GNU General Public License, version 3 or later.</source>
        <extracomment>about window, below the name; %1 is the version</extracomment>
        <translation>Version %1 · Trois expositions, une image. Logiciel libre sous licence publique générale GNU, version 3 ou ultérieure.</translation>
    </message>
    <message id="IDS_WINDOW_CLOSE">
        <source>Close</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Fermer</translation>
    </message>
    <message id="IDS_WINDOW_MINIMIZE">
        <source>Minimise</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Réduire</translation>
    </message>
    <message id="IDS_WINDOW_ZOOM">
        <source>Maximise or restore</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>Agrandir ou restaurer</translation>
    </message>
    <message id="IDS_VALUE_IN_USE">
        <source>Value in use: %1</source>
        <extracomment>tooltip of a slider whose number shows an offset</extracomment>
        <translation>Valeur utilisée : %1</translation>
    </message>
    <message id="IDS_SLIDER_RESET">
        <source>Double-click for the default: %1</source>
        <extracomment>tooltip of a slider; %1 is a number</extracomment>
        <translation>Double-cliquez pour la valeur par défaut : %1</translation>
    </message>
    <message id="IDS_GROUP_MERGE">
        <source>Merge</source>
        <extracomment>group of the four merge sliders</extracomment>
        <translation>Fusion</translation>
    </message>
    <message id="IDS_GROUP_EFFECT">
        <source>Colour effect</source>
        <extracomment>group of saturation, contrast and style</extracomment>
        <translation>Effet de couleur</translation>
    </message>
    <message id="IDS_STYLE">
        <source>Style</source>
        <extracomment>caption of the list of styles</extracomment>
        <translation>Style</translation>
    </message>
    <message id="IDS_HISTOGRAM">
        <source>Histogram</source>
        <extracomment>caption</extracomment>
        <translation>Histogramme</translation>
    </message>
    <message id="IDS_PHOTOGRAPH">
        <source>Photograph %1</source>
        <extracomment>name of a thumbnail; %1 is 1, 2 or 3</extracomment>
        <translation>Photo %1</translation>
    </message>
    <message id="IDS_ADJUSTMENTS">
        <source>Adjustments</source>
        <extracomment>name of the side panel</extracomment>
        <translation>Réglages</translation>
    </message>
    <message id="IDS_HELP_DESCRIPTION">
        <source>Merges three photographs of one scene, taken at different exposures, into one picture.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Fusionne en une image trois photos d’une même scène prises avec des expositions différentes.</translation>
    </message>
    <message id="IDS_HELP_PHOTOGRAPHS">
        <source>Three photographs to open: JPEG or camera RAW.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Trois photos à ouvrir : JPEG ou RAW.</translation>
    </message>
    <message id="IDS_HELP_NO_GUIDE">
        <source>Do not show the guide at start.</source>
        <extracomment>tristop --help</extracomment>
        <translation>Ne pas afficher le guide au démarrage.</translation>
    </message>
    <message id="IDS_PICTURE">
        <source>Picture</source>
        <extracomment>name of the picture view</extracomment>
        <translation>Image</translation>
    </message>
    <message id="IDS_PICTURE_KEYS">
        <source>The arrow keys move the picture.</source>
        <extracomment>description of the picture view for screen readers</extracomment>
        <translation>Les touches fléchées déplacent l’image.</translation>
    </message>
    <message id="IDS_STATUS">
        <source>Status</source>
        <extracomment>name of the status line for screen readers</extracomment>
        <translation>État</translation>
    </message>
    <message id="IDS_FILE_REASON">
        <source>%1: %2</source>
        <extracomment>status line; %1 is a file, %2 a sentence</extracomment>
        <translation>%1 : %2</translation>
    </message>
    <message id="IDS_NO_MEMORY">
        <source>There is not enough memory.</source>
        <extracomment>status line</extracomment>
        <translation>La mémoire est insuffisante.</translation>
    </message>
    <message id="IDS_MERGE_TOO_FAR">
        <source>The exposures are too far apart to be merged.</source>
        <extracomment>status line</extracomment>
        <translation>Les expositions sont trop éloignées pour être fusionnées.</translation>
    </message>
    <message id="IDS_MERGE_UNALIGNED">
        <source>The photographs could not be aligned.</source>
        <extracomment>status line</extracomment>
        <translation>Les photos n’ont pas pu être alignées.</translation>
    </message>
    <message id="IDS_MERGE_ORDER">
        <source>The exposures could not be put in order.</source>
        <extracomment>status line</extracomment>
        <translation>Les expositions n’ont pas pu être ordonnées.</translation>
    </message>
    <message id="IDS_MERGE_FAILED">
        <source>The photographs could not be merged.</source>
        <extracomment>status line</extracomment>
        <translation>Les photos n’ont pas pu être fusionnées.</translation>
    </message>
    <message id="IDS_MERGE_FALLBACK">
        <source>The exposures could not be merged; the picture shows one of them.</source>
        <extracomment>status line</extracomment>
        <translation>Les expositions n’ont pas pu être fusionnées ; l’image montre l’une d’elles.</translation>
    </message>
    <message id="IDS_MERGE_LEFT_OUT">
        <source>It does not show what the others show and was left out.</source>
        <extracomment>status line, behind the name of a photograph</extracomment>
        <translation>Elle ne montre pas la même chose que les autres et a été laissée de côté.</translation>
    </message>
    <message id="IDS_PAGE_NOT_OPENED">
        <source>%1 could not be opened in a browser.</source>
        <extracomment>status line; %1 is the address of a page</extracomment>
        <translation>%1 n’a pas pu être ouvert dans un navigateur.</translation>
    </message>
    <message id="IDS_RUN_FAILED">
        <source>This could not be done.</source>
        <extracomment>status line</extracomment>
        <translation>L’opération a échoué.</translation>
    </message>
    <message id="IDS_MERGE_AGAIN">
        <source>Merge the photographs again first.</source>
        <extracomment>status line</extracomment>
        <translation>Refaites d’abord la fusion des photos.</translation>
    </message>
    <message id="IDS_MERGING">
        <source>Merging…</source>
        <extracomment>progress window</extracomment>
        <translation>Fusion en cours…</translation>
    </message>
    <message id="IDS_EMPTY_TITLE">
        <source>Three photographs, one picture</source>
        <extracomment>window without a picture</extracomment>
        <translation>Trois photos, une image</translation>
    </message>
    <message id="IDS_EMPTY_HINT">
        <source>Drop a dark, a middle and a bright exposure of one scene here</source>
        <extracomment>window without a picture</extracomment>
        <translation>Déposez ici une exposition sombre, une moyenne et une claire d’une même scène</translation>
    </message>
    <message id="IDS_OPEN">
        <source>Open Photographs…</source>
        <extracomment>button of the window without a picture</extracomment>
        <translation>Ouvrir des photos…</translation>
    </message>
    <message id="IDS_NOT_A_PHOTOGRAPH">
        <source>“%1” is neither a JPEG nor a camera RAW file.</source>
        <extracomment>%1 is a file</extracomment>
        <translation>« %1 » n’est ni un fichier JPEG ni un fichier RAW.</translation>
    </message>
    <message id="IDS_FILTER_PHOTOGRAPHS">
        <source>Photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Photos</translation>
    </message>
    <message id="IDS_FILTER_JPEG">
        <source>JPEG photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Photos JPEG</translation>
    </message>
    <message id="IDS_FILTER_RAW">
        <source>Camera RAW photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>Photos RAW</translation>
    </message>
    <message id="IDS_ZOOM_OUT">
        <source>Zoom out</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Zoom arrière</translation>
    </message>
    <message id="IDS_ZOOM_IN">
        <source>Zoom in</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Zoom avant</translation>
    </message>
    <message id="IDS_ZOOM_FIT">
        <source>Fit to window</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Ajuster à la fenêtre</translation>
    </message>
    <message id="IDS_ZOOM_FIT_SHORT">
        <source>Fit</source>
        <extracomment>zoom segment, face</extracomment>
        <translation>Tout</translation>
    </message>
    <message id="IDS_ZOOM_ACTUAL">
        <source>Actual size</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>Taille réelle</translation>
    </message>
    <message id="IDS_ZOOM_PERCENT">
        <source>%1%</source>
        <extracomment>%1 is a number</extracomment>
        <translation>%1 %</translation>
    </message>
    <message id="IDS_SAVING">
        <source>Saving…</source>
        <extracomment>progress window</extracomment>
        <translation>Enregistrement en cours…</translation>
    </message>
    <message id="IDS_SAVED_AS">
        <source>Saved as %1</source>
        <extracomment>status line; %1 is a file</extracomment>
        <translation>Enregistré sous %1</translation>
    </message>
    <message id="IDS_RESCUED">
        <source>The unsaved picture was rescued: %1</source>
        <extracomment>status line at the next start, and on the terminal; %1 is a file</extracomment>
        <translation>L’image non enregistrée a été récupérée : %1</translation>
    </message>
    <message id="IDS_SAVE_OVER_PHOTOGRAPH">
        <source>This is one of the three photographs. Choose another name.</source>
        <extracomment>alert on the save panel</extracomment>
        <translation>C’est l’une des trois photos. Choisissez un autre nom.</translation>
    </message>
    <message id="IDS_SAVE_TYPE">
        <source>Type:</source>
        <extracomment>save options</extracomment>
        <translation>Format :</translation>
    </message>
    <message id="IDS_SAVE_QUALITY">
        <source>Quality:</source>
        <extracomment>save options</extracomment>
        <translation>Qualité :</translation>
    </message>
    <message id="IDS_SAVE_COMPRESSION">
        <source>Compression:</source>
        <extracomment>save options</extracomment>
        <translation>Compression :</translation>
    </message>
    <message id="IDS_SAVE_UNCOMPRESSED">
        <source>None</source>
        <extracomment>save options, compression of a TIFF</extracomment>
        <translation>Aucune</translation>
    </message>
    <message id="IDS_SAVE_STANDARD">
        <source>The standard quality and compression are used.</source>
        <extracomment>save options</extracomment>
        <translation>La qualité et la compression standard sont utilisées.</translation>
    </message>
    <message id="IDS_DISK_FULL">
        <source>The disk is full.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>Le disque est plein.</translation>
    </message>
    <message id="IDS_DISK_READONLY">
        <source>The disk can only be read.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>Le disque est en lecture seule.</translation>
    </message>
    <message id="IDS_NO_PERMISSION">
        <source>You may not write to this folder.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>Vous n’êtes pas autorisé à écrire dans ce dossier.</translation>
    </message>
    <message id="IDS_FOLDER_GONE">
        <source>The folder no longer exists.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>Le dossier n’existe plus.</translation>
    </message>
    <message id="IDS_PRINTING">
        <source>Printing…</source>
        <extracomment>progress window</extracomment>
        <translation>Impression en cours…</translation>
    </message>
    <message id="IDS_PRINT_FAILED">
        <source>The picture could not be printed.</source>
        <extracomment>status line</extracomment>
        <translation>L’image n’a pas pu être imprimée.</translation>
    </message>
    <message id="IDS_SHARE">
        <source>Share</source>
        <extracomment>button</extracomment>
        <translation>Partager</translation>
    </message>
    <message id="IDS_SHARE_EMAIL">
        <source>Send by E-Mail…</source>
        <extracomment>share menu</extracomment>
        <translation>Envoyer par e-mail…</translation>
    </message>
    <message id="IDS_SHARE_OPEN_WITH">
        <source>Open with Another Program…</source>
        <extracomment>share menu</extracomment>
        <translation>Ouvrir avec un autre programme…</translation>
    </message>
    <message id="IDS_SHARE_COPY">
        <source>Copy Picture</source>
        <extracomment>share menu</extracomment>
        <translation>Copier l’image</translation>
    </message>
    <message id="IDS_SHARE_SHOW_IN_FOLDER">
        <source>Show in Folder</source>
        <extracomment>share menu</extracomment>
        <translation>Afficher dans le dossier</translation>
    </message>
    <message id="IDS_COPIED">
        <source>Picture copied</source>
        <extracomment>status line</extracomment>
        <translation>Image copiée</translation>
    </message>
    <message id="IDS_SHARING">
        <source>Preparing to share…</source>
        <extracomment>progress window</extracomment>
        <translation>Préparation du partage…</translation>
    </message>
    <message id="IDS_SHARE_FAILED">
        <source>The picture could not be shared.</source>
        <extracomment>status line</extracomment>
        <translation>L’image n’a pas pu être partagée.</translation>
    </message>
</context>
</TS>
