<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<!-- SPDX-License-Identifier: GPL-3.0-or-later -->
<TS version="2.1" language="ja">
<context>
    <name></name>
    <message id="IDS_MANY_FILES">
        <source>Choose three photographs of one scene: dark, middle and bright</source>
        <extracomment>title of the open panel</extracomment>
        <translation>同じ場面の写真を3枚選択してください（暗・中間・明）</translation>
    </message>
    <message id="IDS_TOO_MANY_ERROR">
        <source>Choose exactly three photographs.</source>
        <extracomment>alert on the open panel</extracomment>
        <translation>写真をちょうど3枚選択してください。</translation>
    </message>
    <message id="IDS_OK">
        <source>OK</source>
        <extracomment>button</extracomment>
        <translation>OK</translation>
    </message>
    <message id="IDS_LOAD_FAILED">
        <source>The photograph could not be read.</source>
        <extracomment>a check failed</extracomment>
        <translation>写真を読み込めませんでした。</translation>
    </message>
    <message id="IDS_RESOLUTION_SMALL_ERROR">
        <source>The photograph is less than 100 pixels wide or high.</source>
        <extracomment>a check failed</extracomment>
        <translation>写真の幅または高さが100ピクセル未満です。</translation>
    </message>
    <message id="IDS_RESOLUTION_DIFFERENT_ERROR">
        <source>The photograph is not of the same size as the others.</source>
        <extracomment>a check failed</extracomment>
        <translation>写真のサイズがほかの写真と一致していません。</translation>
    </message>
    <message id="IDS_LOADING">
        <source>Processing…</source>
        <extracomment>progress window</extracomment>
        <translation>処理中…</translation>
    </message>
    <message id="IDS_SAVE_FAILED">
        <source>The picture could not be saved.</source>
        <extracomment>failure warning</extracomment>
        <translation>画像を保存できませんでした。</translation>
    </message>
    <message id="IDS_SAVE_WARNING">
        <source>Do you want to save the picture?</source>
        <extracomment>message of the unsaved-changes sheet</extracomment>
        <translation>画像を保存しますか？</translation>
    </message>
    <message id="IDS_SAVE_PROMPT">
        <source>If you don’t save, your changes will be lost.</source>
        <extracomment>comment of the unsaved-changes sheet</extracomment>
        <translation>保存しない場合、変更内容は失われます。</translation>
    </message>
    <message id="IDS_SAVE">
        <source>Save</source>
        <extracomment>button</extracomment>
        <translation>保存</translation>
    </message>
    <message id="IDS_DONT_SAVE">
        <source>Don’t Save</source>
        <extracomment>button</extracomment>
        <translation>保存しない</translation>
    </message>
    <message id="IDS_CANCEL">
        <source>Cancel</source>
        <extracomment>button</extracomment>
        <translation>キャンセル</translation>
    </message>
    <message id="IDS_TONE_LENGTH">
        <source>Tone length</source>
        <extracomment>slider</extracomment>
        <translation>トーンの幅</translation>
    </message>
    <message id="IDS_TONE_SATURATION">
        <source>Tone saturation</source>
        <extracomment>slider</extracomment>
        <translation>トーンの彩度</translation>
    </message>
    <message id="IDS_BRIHGTNESS">
        <source>Brightness</source>
        <extracomment>slider</extracomment>
        <translation>明るさ</translation>
    </message>
    <message id="IDS_GHOST">
        <source>Ghost removal</source>
        <extracomment>slider</extracomment>
        <translation>ゴースト除去</translation>
    </message>
    <message id="IDS_SATURATION">
        <source>Saturation</source>
        <extracomment>slider</extracomment>
        <translation>彩度</translation>
    </message>
    <message id="IDS_CONTRAST">
        <source>Contrast</source>
        <extracomment>slider</extracomment>
        <translation>コントラスト</translation>
    </message>
    <message id="IDS_ORIGINAL">
        <source>Original</source>
        <extracomment>style</extracomment>
        <translation>オリジナル</translation>
    </message>
    <message id="IDS_ART">
        <source>Art</source>
        <extracomment>style</extracomment>
        <translation>アート</translation>
    </message>
    <message id="IDS_BW">
        <source>Black and white</source>
        <extracomment>style</extracomment>
        <translation>モノクロ</translation>
    </message>
    <message id="IDS_OUTPUT_SIZE">
        <source>Output size:</source>
        <extracomment>before WIDTHxHEIGHT</extracomment>
        <translation>出力サイズ</translation>
    </message>
    <message id="IDS_PIX">
        <source>pixels</source>
        <extracomment>after WIDTHxHEIGHT</extracomment>
        <translation>ピクセル</translation>
    </message>
    <message id="IDS_MENU_ABOUT">
        <source>&amp;About %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>%1について(&amp;A)</translation>
    </message>
    <message id="IDS_MENU_HIDE">
        <source>&amp;Hide %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>%1を隠す(&amp;H)</translation>
    </message>
    <message id="IDS_MENU_HIDEOTHERS">
        <source>Hide &amp;Others</source>
        <extracomment>menu</extracomment>
        <translation>ほかを隠す(&amp;O)</translation>
    </message>
    <message id="IDS_MENU_SHOWALL">
        <source>&amp;Show All</source>
        <extracomment>menu</extracomment>
        <translation>すべてを表示(&amp;S)</translation>
    </message>
    <message id="IDS_MENU_QUIT">
        <source>&amp;Quit %1</source>
        <extracomment>%1 is the application's name</extracomment>
        <translation>%1を終了(&amp;Q)</translation>
    </message>
    <message id="IDS_MENU_TILES">
        <source>&amp;Open Photographs…</source>
        <extracomment>menu</extracomment>
        <translation>写真を開く(&amp;O)…</translation>
    </message>
    <message id="IDS_MENU_SAVE">
        <source>&amp;Save As…</source>
        <extracomment>menu</extracomment>
        <translation>名前を付けて保存(&amp;S)…</translation>
    </message>
    <message id="IDS_MENU_PAGESETUP">
        <source>Page Set&amp;up…</source>
        <extracomment>menu</extracomment>
        <translation>ページ設定(&amp;U)…</translation>
    </message>
    <message id="IDS_MENU_PRINT">
        <source>&amp;Print…</source>
        <extracomment>menu</extracomment>
        <translation>印刷(&amp;P)…</translation>
    </message>
    <message id="IDS_MENU_ACTUALSIZE">
        <source>&amp;Actual Size</source>
        <extracomment>menu</extracomment>
        <translation>実際のサイズ(&amp;A)</translation>
    </message>
    <message id="IDS_MENU_FITIN">
        <source>&amp;Fit to Window</source>
        <extracomment>menu</extracomment>
        <translation>ウィンドウに合わせる(&amp;F)</translation>
    </message>
    <message id="IDS_MENU_ZOOMIN">
        <source>Zoom &amp;In</source>
        <extracomment>menu</extracomment>
        <translation>拡大(&amp;I)</translation>
    </message>
    <message id="IDS_MENU_ZOOMOUT">
        <source>Zoom &amp;Out</source>
        <extracomment>menu</extracomment>
        <translation>縮小(&amp;O)</translation>
    </message>
    <message id="IDS_MENU_HELP">
        <source>Online &amp;Guide</source>
        <extracomment>menu</extracomment>
        <translation>オンラインガイド(&amp;G)</translation>
    </message>
    <message id="IDS_MENU_FAQ">
        <source>&amp;Frequently Asked Questions</source>
        <extracomment>menu</extracomment>
        <translation>よくある質問(&amp;F)</translation>
    </message>
    <message id="IDS_MENU_CCS">
        <source>&amp;Support</source>
        <extracomment>menu</extracomment>
        <translation>サポート(&amp;S)</translation>
    </message>
    <message id="IDS_AC_DONTSHOWAGAIN">
        <source>Don’t show this again</source>
        <extracomment>check box of the guide</extracomment>
        <translation>今後表示しない</translation>
    </message>
    <message id="IDS_AC_Close">
        <source>Close</source>
        <extracomment>button of the guide</extracomment>
        <translation>閉じる</translation>
    </message>
    <message id="IDS_GUIDE_PAGE">
        <source>index.html</source>
        <extracomment>file in resources/guide</extracomment>
        <translation>index_ja.html</translation>
    </message>
    <message id="IDS_MENUBAR_FILE">
        <source>&amp;File</source>
        <extracomment>menu bar</extracomment>
        <translation>ファイル(&amp;F)</translation>
    </message>
    <message id="IDS_MENUBAR_VIEW">
        <source>&amp;View</source>
        <extracomment>menu bar</extracomment>
        <translation>表示(&amp;V)</translation>
    </message>
    <message id="IDS_MENUBAR_WINDOW">
        <source>&amp;Window</source>
        <extracomment>menu bar</extracomment>
        <translation>ウィンドウ(&amp;W)</translation>
    </message>
    <message id="IDS_MENUBAR_HELP">
        <source>&amp;Help</source>
        <extracomment>menu bar</extracomment>
        <translation>ヘルプ(&amp;H)</translation>
    </message>
    <message id="IDS_MENU_SHOWGUIDE">
        <source>Show Guide at S&amp;tart</source>
        <extracomment>Help menu, with a check mark</extracomment>
        <translation>起動時にガイドを表示(&amp;T)</translation>
    </message>
    <message id="IDS_ABOUT_TEXT">
        <source>Version %1 · Three exposures, one picture. Free software under the GNU General Public License, version 3 or later.</source>
        <extracomment>about window, below the name; %1 is the version</extracomment>
        <translation>バージョン %1 · 3つの露出から1枚の画像へ。GNU一般公衆ライセンス（バージョン3以降）で提供されるフリーソフトウェアです。</translation>
    </message>
    <message id="IDS_WINDOW_CLOSE">
        <source>Close</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>閉じる</translation>
    </message>
    <message id="IDS_WINDOW_MINIMIZE">
        <source>Minimise</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>最小化</translation>
    </message>
    <message id="IDS_WINDOW_ZOOM">
        <source>Maximise or restore</source>
        <extracomment>title bar, name and tooltip of a button</extracomment>
        <translation>最大化または元に戻す</translation>
    </message>
    <message id="IDS_VALUE_IN_USE">
        <source>Value in use: %1</source>
        <extracomment>tooltip of a slider whose number shows an offset</extracomment>
        <translation>使用中の値：%1</translation>
    </message>
    <message id="IDS_SLIDER_RESET">
        <source>Double-click for the default: %1</source>
        <extracomment>tooltip of a slider; %1 is a number</extracomment>
        <translation>ダブルクリックで初期値：%1</translation>
    </message>
    <message id="IDS_GROUP_MERGE">
        <source>Merge</source>
        <extracomment>group of the four merge sliders</extracomment>
        <translation>合成</translation>
    </message>
    <message id="IDS_GROUP_EFFECT">
        <source>Colour effect</source>
        <extracomment>group of saturation, contrast and style</extracomment>
        <translation>カラー効果</translation>
    </message>
    <message id="IDS_STYLE">
        <source>Style</source>
        <extracomment>caption of the list of styles</extracomment>
        <translation>スタイル</translation>
    </message>
    <message id="IDS_HISTOGRAM">
        <source>Histogram</source>
        <extracomment>caption</extracomment>
        <translation>ヒストグラム</translation>
    </message>
    <message id="IDS_PHOTOGRAPH">
        <source>Photograph %1</source>
        <extracomment>name of a thumbnail; %1 is 1, 2 or 3</extracomment>
        <translation>写真 %1</translation>
    </message>
    <message id="IDS_ADJUSTMENTS">
        <source>Adjustments</source>
        <extracomment>name of the side panel</extracomment>
        <translation>調整</translation>
    </message>
    <message id="IDS_HELP_DESCRIPTION">
        <source>Merges three photographs of one scene, taken at different exposures, into one picture.</source>
        <extracomment>tristop --help</extracomment>
        <translation>露出を変えて撮影した同じ場面の3枚の写真を1枚の画像に合成します。</translation>
    </message>
    <message id="IDS_HELP_PHOTOGRAPHS">
        <source>Three photographs to open: JPEG or camera RAW.</source>
        <extracomment>tristop --help</extracomment>
        <translation>開く3枚の写真（JPEGまたはRAW）。</translation>
    </message>
    <message id="IDS_HELP_NO_GUIDE">
        <source>Do not show the guide at start.</source>
        <extracomment>tristop --help</extracomment>
        <translation>起動時にガイドを表示しません。</translation>
    </message>
    <message id="IDS_PICTURE">
        <source>Picture</source>
        <extracomment>name of the picture view</extracomment>
        <translation>画像</translation>
    </message>
    <message id="IDS_PICTURE_KEYS">
        <source>The arrow keys move the picture.</source>
        <extracomment>description of the picture view for screen readers</extracomment>
        <translation>矢印キーで画像を移動します。</translation>
    </message>
    <message id="IDS_STATUS">
        <source>Status</source>
        <extracomment>name of the status line for screen readers</extracomment>
        <translation>状態</translation>
    </message>
    <message id="IDS_FILE_REASON">
        <source>%1: %2</source>
        <extracomment>status line; %1 is a file, %2 a sentence</extracomment>
        <translation>%1：%2</translation>
    </message>
    <message id="IDS_NO_MEMORY">
        <source>There is not enough memory.</source>
        <extracomment>status line</extracomment>
        <translation>メモリが不足しています。</translation>
    </message>
    <message id="IDS_MERGE_TOO_FAR">
        <source>The exposures are too far apart to be merged.</source>
        <extracomment>status line</extracomment>
        <translation>露出の差が大きすぎて合成できません。</translation>
    </message>
    <message id="IDS_MERGE_UNALIGNED">
        <source>The photographs could not be aligned.</source>
        <extracomment>status line</extracomment>
        <translation>写真の位置を合わせられませんでした。</translation>
    </message>
    <message id="IDS_MERGE_ORDER">
        <source>The exposures could not be put in order.</source>
        <extracomment>status line</extracomment>
        <translation>露出の順番を判別できませんでした。</translation>
    </message>
    <message id="IDS_MERGE_FAILED">
        <source>The photographs could not be merged.</source>
        <extracomment>status line</extracomment>
        <translation>写真を合成できませんでした。</translation>
    </message>
    <message id="IDS_MERGE_FALLBACK">
        <source>The exposures could not be merged; the picture shows one of them.</source>
        <extracomment>status line</extracomment>
        <translation>露出を合成できなかったため、そのうちの1枚を表示しています。</translation>
    </message>
    <message id="IDS_MERGE_LEFT_OUT">
        <source>It does not show what the others show and was left out.</source>
        <extracomment>status line, behind the name of a photograph</extracomment>
        <translation>他の写真と内容が一致しないため、除外しました。</translation>
    </message>
    <message id="IDS_PAGE_NOT_OPENED">
        <source>%1 could not be opened in a browser.</source>
        <extracomment>status line; %1 is the address of a page</extracomment>
        <translation>%1 をブラウザーで開けませんでした。</translation>
    </message>
    <message id="IDS_RUN_FAILED">
        <source>This could not be done.</source>
        <extracomment>status line</extracomment>
        <translation>処理できませんでした。</translation>
    </message>
    <message id="IDS_MERGE_AGAIN">
        <source>Merge the photographs again first.</source>
        <extracomment>status line</extracomment>
        <translation>先に写真を合成し直してください。</translation>
    </message>
    <message id="IDS_MERGING">
        <source>Merging…</source>
        <extracomment>progress window</extracomment>
        <translation>合成中…</translation>
    </message>
    <message id="IDS_EMPTY_TITLE">
        <source>Three photographs, one picture</source>
        <extracomment>window without a picture</extracomment>
        <translation>3枚の写真から1枚の画像へ</translation>
    </message>
    <message id="IDS_EMPTY_HINT">
        <source>Drop a dark, a middle and a bright exposure of one scene here</source>
        <extracomment>window without a picture</extracomment>
        <translation>同じ場面を暗く、中間に、明るく撮影した3枚をここにドロップ</translation>
    </message>
    <message id="IDS_OPEN">
        <source>Open Photographs…</source>
        <extracomment>button of the window without a picture</extracomment>
        <translation>写真を開く…</translation>
    </message>
    <message id="IDS_NOT_A_PHOTOGRAPH">
        <source>“%1” is neither a JPEG nor a camera RAW file.</source>
        <extracomment>%1 is a file</extracomment>
        <translation>「%1」はJPEGでもRAWでもありません。</translation>
    </message>
    <message id="IDS_FILTER_PHOTOGRAPHS">
        <source>Photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>写真</translation>
    </message>
    <message id="IDS_FILTER_JPEG">
        <source>JPEG photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>JPEG写真</translation>
    </message>
    <message id="IDS_FILTER_RAW">
        <source>Camera RAW photographs</source>
        <extracomment>type in the open panel</extracomment>
        <translation>RAW写真</translation>
    </message>
    <message id="IDS_ZOOM_OUT">
        <source>Zoom out</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>縮小</translation>
    </message>
    <message id="IDS_ZOOM_IN">
        <source>Zoom in</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>拡大</translation>
    </message>
    <message id="IDS_ZOOM_FIT">
        <source>Fit to window</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>ウィンドウに合わせる</translation>
    </message>
    <message id="IDS_ZOOM_FIT_SHORT">
        <source>Fit</source>
        <extracomment>zoom segment, face</extracomment>
        <translation>全体</translation>
    </message>
    <message id="IDS_ZOOM_ACTUAL">
        <source>Actual size</source>
        <extracomment>zoom segment, name and tooltip</extracomment>
        <translation>実際のサイズ</translation>
    </message>
    <message id="IDS_ZOOM_PERCENT">
        <source>%1%</source>
        <extracomment>%1 is a number</extracomment>
        <translation>%1%</translation>
    </message>
    <message id="IDS_SAVING">
        <source>Saving…</source>
        <extracomment>progress window</extracomment>
        <translation>保存中…</translation>
    </message>
    <message id="IDS_SAVED_AS">
        <source>Saved as %1</source>
        <extracomment>status line; %1 is a file</extracomment>
        <translation>%1として保存しました</translation>
    </message>
    <message id="IDS_RESCUED">
        <source>The unsaved picture was rescued: %1</source>
        <extracomment>status line at the next start, and on the terminal; %1 is a file</extracomment>
        <translation>保存されていない画像を復旧しました：%1</translation>
    </message>
    <message id="IDS_SAVE_OVER_PHOTOGRAPH">
        <source>This is one of the three photographs. Choose another name.</source>
        <extracomment>alert on the save panel</extracomment>
        <translation>これは元の3枚の写真の1つです。別の名前を選択してください。</translation>
    </message>
    <message id="IDS_SAVE_TYPE">
        <source>Type:</source>
        <extracomment>save options</extracomment>
        <translation>形式：</translation>
    </message>
    <message id="IDS_SAVE_QUALITY">
        <source>Quality:</source>
        <extracomment>save options</extracomment>
        <translation>画質：</translation>
    </message>
    <message id="IDS_SAVE_COMPRESSION">
        <source>Compression:</source>
        <extracomment>save options</extracomment>
        <translation>圧縮：</translation>
    </message>
    <message id="IDS_SAVE_UNCOMPRESSED">
        <source>None</source>
        <extracomment>save options, compression of a TIFF</extracomment>
        <translation>なし</translation>
    </message>
    <message id="IDS_SAVE_STANDARD">
        <source>The standard quality and compression are used.</source>
        <extracomment>save options</extracomment>
        <translation>標準の画質と圧縮が使われます。</translation>
    </message>
    <message id="IDS_DISK_FULL">
        <source>The disk is full.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>ディスクの空き容量がありません。</translation>
    </message>
    <message id="IDS_DISK_READONLY">
        <source>The disk can only be read.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>ディスクは読み取り専用です。</translation>
    </message>
    <message id="IDS_NO_PERMISSION">
        <source>You may not write to this folder.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>このフォルダーに書き込む権限がありません。</translation>
    </message>
    <message id="IDS_FOLDER_GONE">
        <source>The folder no longer exists.</source>
        <extracomment>after the name of a file</extracomment>
        <translation>フォルダーが見つかりません。</translation>
    </message>
    <message id="IDS_PRINTING">
        <source>Printing…</source>
        <extracomment>progress window</extracomment>
        <translation>印刷中…</translation>
    </message>
    <message id="IDS_PRINT_FAILED">
        <source>The picture could not be printed.</source>
        <extracomment>status line</extracomment>
        <translation>画像を印刷できませんでした。</translation>
    </message>
    <message id="IDS_SHARE">
        <source>Share</source>
        <extracomment>button</extracomment>
        <translation>共有</translation>
    </message>
    <message id="IDS_SHARE_EMAIL">
        <source>Send by E-Mail…</source>
        <extracomment>share menu</extracomment>
        <translation>メールで送信…</translation>
    </message>
    <message id="IDS_SHARE_OPEN_WITH">
        <source>Open with Another Program…</source>
        <extracomment>share menu</extracomment>
        <translation>別のプログラムで開く…</translation>
    </message>
    <message id="IDS_SHARE_COPY">
        <source>Copy Picture</source>
        <extracomment>share menu</extracomment>
        <translation>画像をコピー</translation>
    </message>
    <message id="IDS_SHARE_SHOW_IN_FOLDER">
        <source>Show in Folder</source>
        <extracomment>share menu</extracomment>
        <translation>フォルダーに表示</translation>
    </message>
    <message id="IDS_COPIED">
        <source>Picture copied</source>
        <extracomment>status line</extracomment>
        <translation>画像をコピーしました</translation>
    </message>
    <message id="IDS_SHARING">
        <source>Preparing to share…</source>
        <extracomment>progress window</extracomment>
        <translation>共有の準備中…</translation>
    </message>
    <message id="IDS_SHARE_FAILED">
        <source>The picture could not be shared.</source>
        <extracomment>status line</extracomment>
        <translation>画像を共有できませんでした。</translation>
    </message>
</context>
</TS>
