#pragma once

#include <algorithm>
#include <array>
#include <ranges>
#include <string>
#include <string_view>

namespace kivo::simulator {

/// A text of the simulated vendors' screens, which exists in each language. Made from the English text: a text that the
/// table lacks does not compile.
class VendorText {
public:
    static constexpr std::array<std::string_view, 7> languages{"en", "de", "fr", "es", "pl", "ar", "ja"};
    using Row = std::array<std::string_view, languages.size()>;

    consteval VendorText(const char* english); // NOLINT(google-explicit-constructor): a literal stands for its text

    std::string_view english() const { return (*row_)[0]; }

    /// The text in the words of the host's table or of the SDK's where a table has the text, else in the language of
    /// the SDK's screens, else in English. "{}" stands for `number`.
    std::string shown(long number = 0) const;

private:
    const Row* row_;
};

namespace vendor_texts {

inline constexpr auto rows = std::to_array<VendorText::Row>({
    // Every page.
    {"Simulated: no camera, no chip", "Simuliert: keine Kamera, kein Chip", "Simulation : ni appareil photo, ni puce",
     "Simulación: sin cámara ni chip", "Symulacja: bez aparatu i bez chipa", "محاكاة: بلا كاميرا وبلا شريحة",
     "シミュレーション：カメラ・ICなし"},
    {"Keep your face inside the oval and look straight ahead.",
     "Halten Sie Ihr Gesicht im Oval und blicken Sie geradeaus.",
     "Gardez le visage dans l’ovale et regardez droit devant vous.",
     "Mantenga la cara dentro del óvalo y mire al frente.", "Trzymaj twarz w owalu i patrz prosto przed siebie.",
     "أبقِ وجهك داخل الإطار البيضوي وانظر إلى الأمام.", "顔を楕円の中に合わせ、正面を見てください。"},
    {"Keep the document flat inside the frame.", "Halten Sie das Dokument flach in den Rahmen.",
     "Gardez le document à plat dans le cadre.", "Mantenga el documento plano dentro del marco.",
     "Trzymaj dokument płasko w ramce.", "أبقِ الوثيقة مستوية داخل الإطار.",
     "書類を平らにして枠の中に合わせてください。"},
    {"Cancel", "Abbrechen", "Annuler", "Cancelar", "Anuluj", "إلغاء", "キャンセル"},
    {"Refuse the camera", "Kamera verweigern", "Refuser l’appareil photo", "Rechazar la cámara",
     "Nie zezwalaj na aparat", "رفض استخدام الكاميرا", "カメラを許可しない"},

    // The scans of a face and of a card.
    {"Simulated face scan", "Simulierter Gesichtsscan", "Scan du visage simulé", "Escaneo facial simulado",
     "Symulowany skan twarzy", "مسح وجه تجريبي", "顔スキャン（シミュレーション）"},
    {"Simulated ID scan", "Simulierter Ausweisscan", "Scan de pièce d’identité simulé", "Escaneo de documento simulado",
     "Symulowany skan dokumentu", "مسح هوية تجريبي", "身分証スキャン（シミュレーション）"},
    {"Simulated ID scan: the back side", "Simulierter Ausweisscan: die Rückseite",
     "Scan de pièce d’identité simulé : le verso", "Escaneo de documento simulado: el reverso",
     "Symulowany skan dokumentu: tył", "مسح هوية تجريبي: الوجه الخلفي", "身分証スキャン（シミュレーション）：裏面"},
    {"There is no camera here: choose how the scan goes.",
     "Hier gibt es keine Kamera: Wählen Sie, wie der Scan verläuft.",
     "Il n’y a pas d’appareil photo ici : choisissez l’issue du scan.",
     "Aquí no hay cámara: elija cómo transcurre el escaneo.", "Nie ma tu aparatu: wybierz przebieg skanu.",
     "لا توجد كاميرا هنا: اختر كيف يسير المسح.", "ここにはカメラがありません。スキャンの結果を選んでください。"},
    {"There is no camera here: the scan goes as it was planned.",
     "Hier gibt es keine Kamera: Der Scan verläuft wie geplant.",
     "Il n’y a pas d’appareil photo ici : le scan se déroule comme prévu.",
     "Aquí no hay cámara: el escaneo transcurre según lo previsto.",
     "Nie ma tu aparatu: skan przebiega zgodnie z planem.", "لا توجد كاميرا هنا: يسير المسح كما خُطط له.",
     "ここにはカメラがありません。スキャンは予定どおりに進みます。"},
    {"Finish the scan", "Scan abschließen", "Terminer le scan", "Terminar el escaneo", "Zakończ skan", "إنهاء المسح",
     "スキャンを終える"},
    {"Let it time out", "Zeit ablaufen lassen", "Laisser le délai expirer", "Dejar que se agote el tiempo",
     "Pozwól, by czas minął", "ترك المهلة تنتهي", "時間切れにする"},
    {"Switch to another app", "Zu einer anderen App wechseln", "Passer à une autre application",
     "Cambiar a otra aplicación", "Przejdź do innej aplikacji", "الانتقال إلى تطبيق آخر", "別のアプリに切り替える"},
    {"Sending the scan", "Der Scan wird gesendet", "Envoi du scan", "Enviando el escaneo", "Wysyłanie skanu",
     "جارٍ إرسال المسح", "スキャンを送信しています"},
    {"{} % sent", "{} % gesendet", "{} % envoyés", "{} % enviado", "Wysłano {}%", "أُرسل {}٪", "{}％送信しました"},
    {"Stopping", "Der Scan wird beendet", "Arrêt en cours", "Deteniendo", "Zatrzymywanie", "جارٍ الإيقاف",
     "停止しています"},
    {"Please scan once more", "Bitte scannen Sie noch einmal", "Veuillez scanner encore une fois",
     "Escanee una vez más, por favor", "Zeskanuj jeszcze raz", "يُرجى المسح مرة أخرى", "もう一度スキャンしてください"},
    {"Scan again", "Noch einmal scannen", "Scanner à nouveau", "Volver a escanear", "Skanuj ponownie", "المسح مجددًا",
     "もう一度スキャンする"},
    {"The scan is done", "Der Scan ist fertig", "Le scan est terminé", "El escaneo ha terminado", "Skan jest gotowy",
     "اكتمل المسح", "スキャンが完了しました"},
    {"Continue", "Weiter", "Continuer", "Continuar", "Dalej", "متابعة", "続ける"},

    // The document reader.
    {"Document reader (simulated)", "Dokumentenleser (simuliert)", "Lecteur de documents (simulé)",
     "Lector de documentos (simulado)", "Czytnik dokumentów (symulowany)", "قارئ الوثائق (محاكاة)",
     "書類リーダー（シミュレーション）"},
    {"Choose how the reading goes", "Wählen Sie, wie das Lesen verläuft", "Choisissez l’issue de la lecture",
     "Elija cómo transcurre la lectura", "Wybierz przebieg odczytu", "اختر كيف تسير القراءة",
     "読み取りの結果を選んでください"},
    {"Reading the document", "Das Dokument wird gelesen", "Lecture du document", "Leyendo el documento",
     "Odczytywanie dokumentu", "جارٍ قراءة الوثيقة", "書類を読み取っています"},
    {"Sending what was read", "Das Gelesene wird gesendet", "Envoi des données lues", "Enviando lo leído",
     "Wysyłanie odczytanych danych", "جارٍ إرسال ما قُرئ", "読み取った内容を送信しています"},
    {"Read the page and the chip", "Seite und Chip lesen", "Lire la page et la puce", "Leer la página y el chip",
     "Odczytaj stronę i chip", "قراءة الصفحة والشريحة", "ページとICチップを読み取る"},
    {"Read the chip only", "Nur den Chip lesen", "Lire seulement la puce", "Leer solo el chip", "Odczytaj tylko chip",
     "قراءة الشريحة فقط", "ICチップだけを読み取る"},
    {"Read the page only", "Nur die Seite lesen", "Lire seulement la page", "Leer solo la página",
     "Odczytaj tylko stronę", "قراءة الصفحة فقط", "ページだけを読み取る"},
    {"Cancel after the page", "Nach der Seite abbrechen", "Annuler après la page", "Cancelar después de la página",
     "Anuluj po stronie", "الإلغاء بعد الصفحة", "ページの後でキャンセルする"},
    {"Go back", "Zurückgehen", "Revenir en arrière", "Volver atrás", "Wróć", "العودة", "前に戻る"},
    {"Never show the page", "Die Seite nie zeigen", "Ne jamais montrer la page", "No mostrar nunca la página",
     "Nie pokazuj strony", "عدم إظهار الصفحة", "ページを見せない"},
    {"Show a document of another kind", "Ein Dokument anderer Art zeigen", "Montrer un document d’un autre type",
     "Mostrar un documento de otro tipo", "Pokaż dokument innego rodzaju", "إظهار وثيقة من نوع آخر",
     "別の種類の書類を見せる"},
    {"Show an unknown kind of document", "Eine unbekannte Dokumentart zeigen", "Montrer un document de type inconnu",
     "Mostrar un tipo de documento desconocido", "Pokaż dokument nieznanego rodzaju", "إظهار وثيقة من نوع غير معروف",
     "不明な種類の書類を見せる"},
    {"Show a document without a chip", "Ein Dokument ohne Chip zeigen", "Montrer un document sans puce",
     "Mostrar un documento sin chip", "Pokaż dokument bez chipa", "إظهار وثيقة بلا شريحة",
     "ICチップのない書類を見せる"},
    {"Have the chip deny access", "Den Chip den Zugriff verweigern lassen", "Faire refuser l’accès par la puce",
     "Hacer que el chip deniegue el acceso", "Niech chip odmówi dostępu", "جعل الشريحة ترفض الوصول",
     "ICチップにアクセスを拒否させる"},
    {"Take the document away", "Das Dokument wegnehmen", "Retirer le document", "Retirar el documento",
     "Zabierz dokument", "إبعاد الوثيقة", "書類を離す"},
    {"Leave the app for too long", "Die App zu lange verlassen", "Quitter l’application trop longtemps",
     "Salir de la aplicación demasiado tiempo", "Opuść aplikację na zbyt długo", "ترك التطبيق مدة طويلة",
     "アプリを長く離れすぎる"},
    {"Take too long", "Zu lange brauchen", "Prendre trop de temps", "Tardar demasiado", "Trwaj zbyt długo",
     "التأخر أكثر من اللازم", "時間をかけすぎる"},
    {"Have the access key refused", "Den Zugangsschlüssel ablehnen lassen", "Faire refuser la clé d’accès",
     "Hacer que se rechace la clave de acceso", "Niech klucz dostępu zostanie odrzucony", "جعل مفتاح الوصول يُرفض",
     "アクセスキーを拒否させる"},
    {"Have the server lose the session", "Den Server die Sitzung verlieren lassen",
     "Faire perdre la session au serveur", "Hacer que el servidor pierda la sesión", "Niech serwer utraci sesję",
     "جعل الخادم يفقد الجلسة", "サーバーにセッションを失わせる"},
    {"Have the server refuse too many requests", "Den Server zu viele Anfragen ablehnen lassen",
     "Faire refuser trop de requêtes par le serveur", "Hacer que el servidor rechace demasiadas peticiones",
     "Niech serwer odrzuci nadmiar żądań", "جعل الخادم يرفض كثرة الطلبات", "リクエスト過多でサーバーに拒否させる"},
    {"Meet a server with a false certificate", "Auf einen Server mit falschem Zertifikat treffen",
     "Rencontrer un serveur au certificat falsifié", "Encontrar un servidor con un certificado falso",
     "Traf na serwer z fałszywym certyfikatem", "مصادفة خادم بشهادة مزيفة", "偽の証明書を持つサーバーに接続する"},
    {"Lose the connection", "Die Verbindung verlieren", "Perdre la connexion", "Perder la conexión", "Utrać połączenie",
     "فقدان الاتصال", "接続を失う"},
    {"Fail for an unknown reason", "Aus unbekanntem Grund scheitern", "Échouer pour une raison inconnue",
     "Fallar por un motivo desconocido", "Zakończ błędem z nieznanej przyczyny", "الفشل لسبب غير معروف",
     "不明な理由で失敗する"},
    {"Succeed in an unknown way", "Auf unbekannte Weise gelingen", "Réussir d’une manière inconnue",
     "Tener éxito de un modo desconocido", "Zakończ sukcesem w nieznany sposób", "النجاح بطريقة غير معروفة",
     "不明な方法で成功する"},
});

static_assert(std::ranges::none_of(std::views::join(rows), &std::string_view::empty), "a text lacks a language");

} // namespace vendor_texts

consteval VendorText::VendorText(const char* english)
    : row_{std::ranges::find(vendor_texts::rows, std::string_view{english}, [](const Row& row) { return row[0]; })} {
    if (row_ == vendor_texts::rows.end()) {
        throw "the table lacks this text";
    }
}

} // namespace kivo::simulator
