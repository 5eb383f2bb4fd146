#pragma once

#include <gtest/gtest.h>
#include <unicode/ucnv.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/CharSet.h"

/// @file
/// Natural prose in many languages and charsets, for every test that detects. The texts are UTF-16
/// here and are converted by ICU when the samples are made, so that each stands once however many
/// charsets it comes in.

namespace Kestra::Test {

struct CharsetSample {
    std::string note;  ///< unique; names the sample in tables and messages
    std::string language;
    std::string charsetName;
    StringNS::CharSet::Code code = 0;  ///< the code page that reads it
    std::string bytes;
    std::u16string text;  ///< what the bytes say, whole even when they are cut
};

namespace CharsetTexts {

// clang-format off
// Russian: an autumn at a country house.
inline constexpr char16_t RUSSIAN_LONG[] =
    u"В конце августа мы всегда уезжали на дачу и оставались там до первых холодов. Дом стоял на "
    u"краю деревни, за ним начиналось поле, а за полем темнел лес, куда дед водил нас за грибами. "
    u"Просыпались рано, когда над рекой ещё лежал туман и трава была мокрой от росы. Бабушка "
    u"растапливала печь, ставила самовар, и по всему дому пахло дымом, яблоками и свежим хлебом."
    u"\n\nДед никогда не торопился. Он проверял корзины, точил ножик, долго искал свою старую "
    u"кепку, хотя она всякий раз висела на одном и том же гвозде у двери. Потом мы шли через поле "
    u"гуськом: впереди он, за ним мой брат, а я последним, потому что был младше всех и часто "
    u"останавливался. Меня занимало всё: муравьиная дорога поперёк тропинки, чьи-то следы на "
    u"песке, голос незнакомой птицы.\n\nВ лесу полагалось молчать. «Гриб шума не любит», — говорил "
    u"дед, и мы верили ему безоговорочно. Впрочем, молчать удавалось недолго: стоило кому-нибудь "
    u"найти первый белый, как тишина заканчивалась. Мы бежали смотреть, спорили, кто заметил "
    u"раньше, и только потом аккуратно срезали ножку и прятали находку на дно корзины, под мох.\n\n"
    u"К полудню возвращались домой. Корзины были тяжёлыми, ноги гудели, но никто не жаловался. "
    u"Бабушка расстилала на крыльце старую газету, и мы до самого вечера чистили грибы: часть шла "
    u"в суп, часть нанизывали на нитку и вешали сушиться над печкой. Вечером приходили соседи, "
    u"пили чай с вареньем и рассказывали истории, которые я до сих пор помню почти слово в слово."
    u"\n\nТеперь в том доме живут другие люди. Прошлым летом я проезжал мимо и не удержался, "
    u"остановил машину. На крыльце сидела девочка лет семи и перебирала ягоды. Она посмотрела на "
    u"меня и спросила, не заблудился ли я. «Нет, — ответил я, — просто когда-то я тоже здесь жил». "
    u"Девочка кивнула так серьёзно, будто всё поняла, и протянула мне горсть черники.";

// Russian: opening hours of a library.
inline constexpr char16_t RUSSIAN[] =
    u"Городская библиотека приглашает читателей в обновлённый зал на втором этаже. Здесь собраны "
    u"книги по истории края, подшивки старых газет и карты, которые раньше хранились в архиве. Зал "
    u"открыт каждый день, кроме понедельника, с десяти утра до восьми вечера. Чтобы взять книгу "
    u"домой, нужен читательский билет: его оформят за пять минут, если вы принесёте паспорт. Дети "
    u"до четырнадцати лет записываются вместе с родителями.";

// Russian: a remark on the weather.
inline constexpr char16_t RUSSIAN_SHORT[] =
    u"Завтра обещают дождь, поэтому возьмите с собой зонт и тёплую куртку.";

// Ukrainian: a walk through the old town.
inline constexpr char16_t UKRAINIAN[] =
    u"Старе місто найкраще оглядати пішки, і починати варто від ринкової площі. Уранці тут ще "
    u"тихо: двірники підмітають бруківку, у кав'ярнях виставляють столики, а голуби чекають на "
    u"перших туристів. Якщо піднятися на ратушну вежу, побачите дахи, церкви й далекі пагорби за "
    u"річкою. Потім можна зайти до музею, де показують годинники, вироблені місцевими майстрами "
    u"двісті років тому. Їхній хід і досі точний, хоча ключі до деяких давно загубилися.";

// Bulgarian: a recipe.
inline constexpr char16_t BULGARIAN[] =
    u"За тази супа са нужни три големи картофа, един морков, глава лук и шепа пресен магданоз. "
    u"Нарежете зеленчуците на дребни кубчета и ги запържете леко в малко масло. Залейте ги с литър "
    u"гореща вода и оставете да къкрят на слаб огън около двайсет минути. Накрая разбийте едно "
    u"яйце с кофичка кисело мляко, разредете сместа с няколко лъжици от бульона и внимателно я "
    u"върнете в тенджерата. Не оставяйте супата да заври отново, защото млякото ще се пресече.";

// Japanese: a small station by the sea.
inline constexpr char16_t JAPANESE[] =
    u"海の近くに、一日に六本しか列車が止まらない小さな駅があります。駅員さんはいません。ホームには"
    u"木のベンチが二つと、色あせた時刻表があるだけです。けれども、春になると線路のわきに菜の花が咲"
    u"き、遠くの町から写真を撮りに来る人でにぎわいます。祖母はこの駅の前で長いあいだ小さな食堂を開"
    u"いていました。人気があったのは、朝とれたばかりの魚を使った定食と、冬だけのおしるこです。列車"
    u"を待つ学生たちは、カウンターで宿題をしながら祖母の話を聞いていました。食堂は十年前に閉まりま"
    u"したが、赤いのれんは今でも私の部屋に飾ってあります。ときどきそれを見ると、波の音とだしの香り"
    u"がよみがえってきます。";

// Japanese: a museum is closed.
inline constexpr char16_t JAPANESE_SHORT[] =
    u"明日は休館日です。図書室の本は入口の返却箱に入れてください。なお、電話でのお問い合わせは来週"
    u"の月曜日の午前九時から受け付けます。";

// Chinese (simplified): a teahouse in the old street.
inline constexpr char16_t CHINESE[] =
    u"老街尽头有一家茶馆，门口挂着两盏红灯笼。老板姓陈，今年七十二岁，每天早上五点钟就起来烧水。他"
    u"说，泡茶最要紧的不是茶叶，而是耐心。来喝茶的大多是附近的老邻居，他们坐在竹椅上聊天、下棋，一"
    u"坐就是半天。到了周末，也有年轻人背着相机来拍照。陈老板从来不嫌吵，总是笑着给他们添水，还讲起"
    u"这条街从前的故事：哪一家卖过布，哪一家做过豆腐，哪座桥是哪一年修的。去年冬天，茶馆重新刷了墙"
    u"，换了窗户，但那张用了四十年的柜台谁也舍不得搬走。";

// Chinese (simplified): a notice in a lift.
inline constexpr char16_t CHINESE_SHORT[] =
    u"本楼电梯将于星期三上午进行检修，预计两个小时后恢复使用。请各位住户提前安排好出行时间，不便之"
    u"处敬请谅解，谢谢大家的配合与支持。";

// Chinese (traditional): a night market.
inline constexpr char16_t TAIWANESE[] =
    u"每到傍晚，河邊的空地就慢慢熱鬧起來。攤販們推著車子從四面八方趕來，掛起燈泡，擺好桌椅，不到一"
    u"個小時，整條路便飄滿了香味。我最喜歡的是轉角那家賣蔥油餅的小攤，老闆娘做了三十年，手藝一點也"
    u"沒有退步。她總是記得客人的口味，誰要加蛋，誰不吃辣，從來不會弄錯。吃飽以後，大家沿著河堤散步"
    u"，看孩子們放風箏，聽老人拉二胡。等到月亮升上屋頂，攤販才一個個收拾東西，互相道聲晚安，明天再"
    u"見。";

// Korean: a bookshop on the corner.
inline constexpr char16_t KOREAN[] =
    u"우리 동네 모퉁이에는 오래된 서점이 하나 있다. 간판은 빛이 바랬고 계단은 삐걱거리지만, 문을 열"
    u"고 들어서면 종이 냄새가 먼저 반겨 준다. 주인아저씨는 손님이 찾는 책이 없으면 며칠이 걸려도 꼭"
    u" 구해 놓는다. 비가 오는 날이면 나는 창가에 놓인 의자에 앉아 시집을 읽곤 했다. 요즘은 인터넷으"
    u"로 책을 사는 사람이 많아져서 손님이 줄었다고 한다. 그래도 아저씨는 가게를 닫을 생각이 없다고 "
    u"웃으며 말했다. 책을 고르는 시간도 책의 일부라는 것이다. 나는 그 말이 참 마음에 들었다.";

// Korean: a table is reserved.
inline constexpr char16_t KOREAN_SHORT[] =
    u"오늘 저녁 일곱 시에 네 사람 자리를 예약하고 싶습니다. 창가 쪽 조용한 자리가 있으면 좋겠고, 아"
    u"이가 앉을 의자도 하나 준비해 주세요.";

// Greek: a spring morning on an island.
inline constexpr char16_t GREEK[] =
    u"Την άνοιξη το νησί αλλάζει πρόσωπο. Οι πλαγιές γεμίζουν παπαρούνες, τα καΐκια βάφονται άσπρα "
    u"και γαλάζια, και στα καφενεία του λιμανιού βγαίνουν πάλι τα τραπέζια έξω. Οι ψαράδες "
    u"γυρίζουν πριν από το ξημέρωμα και απλώνουν τα δίχτυα τους στον ήλιο. Ο παππούς μου έλεγε πως "
    u"«όποιος βιάζεται, δεν βλέπει τη θάλασσα». Κάθε πρωί περπατούσε ως τον φάρο, χαιρετούσε όλους "
    u"με το όνομά τους και ύστερα έπινε τον καφέ του χωρίς να κοιτάξει ούτε μία φορά το ρολόι.";

// Greek: a museum opens; capital alphas with accents.
inline constexpr char16_t GREEK_ACCENTS[] =
    u"Άνοιξε χθες το νέο μουσείο στο λιμάνι. Άνθρωποι κάθε ηλικίας περίμεναν από νωρίς για να δουν "
    u"τα παλιά καράβια, τους χάρτες και τα όργανα των ναυτικών. Η είσοδος είναι ελεύθερη ως την "
    u"Κυριακή, και τα παιδιά παίρνουν μαζί τους ένα χάρτινο καραβάκι.";

// Hebrew: a garden on a roof.
inline constexpr char16_t HEBREW[] =
    u"לפני שלוש שנים החליטו הדיירים בבניין שלנו להקים גינה על הגג. בהתחלה היו שם רק כמה עציצים של "
    u"נענע ובזיליקום, אבל היום גדלים בה עגבניות, מלפפונים ואפילו עץ לימון קטן. בכל יום שישי בבוקר "
    u"נפגשים השכנים להשקות, לנכש עשבים ולשתות יחד קפה. הילדים אחראים על הקומפוסט, והשכנה מהקומה "
    u"השנייה כותבת במחברת מה נשתל ומתי. מי שעבד קיבל סלסלה עם ירקות, ומי שלא הספיק מוזמן לבוא "
    u"בשבוע הבא. כך הפך הגג הריק למקום שבו אנשים מכירים זה את זה.";

// Arabic: a market in the morning.
inline constexpr char16_t ARABIC[] =
    u"يبدأ يوم السوق قبل شروق الشمس. يصل المزارعون من القرى القريبة ومعهم الخضار والفواكه والجبن "
    u"الطازج، ويفرشون بضاعتهم تحت الأشجار الكبيرة في وسط الساحة. تأتي النساء مبكرا لاختيار أفضل "
    u"الطماطم، أما الرجال فيجلسون في المقهى المجاور ويتحدثون عن المطر وأسعار القمح. كان جدي يقول "
    u"إن من يريد أن يعرف أخبار المدينة فعليه أن يزور السوق لا أن يقرأ الجريدة. وعند الظهر تهدأ "
    u"الأصوات شيئا فشيئا، ويجمع الباعة ما بقي من صناديقهم، ثم يعودون إلى بيوتهم حتى الأسبوع القادم.";

// Turkish: a ferry across the water.
inline constexpr char16_t TURKISH[] =
    u"Her sabah saat yedi buçukta iskeleden kalkan vapura binerim. Yolcuların çoğu birbirini "
    u"tanır; kimi gazetesini okur, kimi simidini martılarla paylaşır. Kışın içerideki sobanın yanı "
    u"hemen dolar, yazın ise herkes güvertede oturmak ister. Çaycı Hüseyin Ağabey kimin şekerli, "
    u"kimin açık içtiğini hiç unutmaz. Karşı kıyıya varmak yirmi dakika sürer, ama bana göre günün "
    u"en güzel bölümü budur. Köprüden geçmek belki daha hızlıdır, fakat ben denizin kokusunu "
    u"trafiğin gürültüsüne değişmem.";

// Polish: a train in the mountains.
inline constexpr char16_t POLISH[] =
    u"Kolejka wąskotorowa wyrusza z doliny punktualnie o dziewiątej. Wagony są drewniane, ławki "
    u"twarde, a okna otwierają się tylko do połowy, ale nikomu to nie przeszkadza. Zaraz za mostem "
    u"zaczyna się las, potem tory wspinają się łagodnymi zakrętami aż na przełęcz. Maszynista "
    u"zwalnia przy każdym punkcie widokowym, żeby podróżni zdążyli zrobić zdjęcia. Na górnej "
    u"stacji czeka schronisko, w którym podają żurek i szarlotkę z jagodami. Dzieci najbardziej "
    u"lubią chwilę, gdy lokomotywa gwiżdże i z komina bucha biały kłąb pary. Droga powrotna trwa "
    u"krócej, niż by się chciało.";

// Czech: bees after a house.
inline constexpr char16_t CZECH[] =
    u"Strýc choval včely na zahradě za domem, hned vedle staré hrušně. Úly natíral každé jaro "
    u"jinou barvou, protože prý včely poznají, kde bydlí, podle odstínu. Když jsme k němu přijeli "
    u"na prázdniny, směli jsme mu pomáhat s vytáčením medu, ale jen v dlouhých rukávech a s "
    u"kloboukem na hlavě. Přesto jsem každé léto dostal aspoň tři žihadla. Teta na ně přikládala "
    u"rozkrojenou cibuli a tvrdila, že člověk, kterého nikdy nic nebodlo, neví nic o světě. "
    u"Nejlepší byl první krajíc chleba s čerstvým medem, ještě teplým od slunce.";

// Hungarian: a bridge and its keeper.
inline constexpr char16_t HUNGARIAN[] =
    u"A régi híd őre egész életét a folyó mellett töltötte. Kora reggel végigsétált a korláton, "
    u"megnézte a vízállást, és feljegyezte egy vastag, kék füzetbe. A gyerekek szerették, mert "
    u"mindig volt a zsebében dió vagy mézes cukor. Árvíz idején ő vitte a hírt a faluba, "
    u"kerékpárral, esőben, sárban is. Amikor megépült az új út, a hidat lezárták, és az öreg őr "
    u"nyugdíjba ment. Azóta is kijár minden vasárnap, leül a füzek alá, és türelmesen elmeséli "
    u"annak, aki megkérdezi, milyen magasan járt a víz abban az esztendőben, amikor született.";

// Romanian: a letter from the village (cedillas, as the charsets have them).
inline constexpr char16_t ROMANIAN[] =
    u"Dragă Ioana, la noi a început culesul viilor şi toată lumea este pe câmp de dimineaţă până "
    u"seara. Bunica spune că strugurii sunt mai dulci decât anul trecut, fiindcă vara a fost lungă "
    u"şi fără ploi. Duminică vine unchiul cu căruţa să ducem lăzile la cramă. Câinele cel mic s-a "
    u"făcut mare şi păzeşte singur curtea, deşi se teme încă de gâşte. Când ajungi şi tu, să-ţi "
    u"aduci cizmele, pentru că drumul spre pădure e plin de noroi. Te îmbrăţişăm cu drag şi te "
    u"aşteptăm cât mai curând.";

// German: an afternoon in a workshop.
inline constexpr char16_t GERMAN[] =
    u"In der Werkstatt meines Großvaters hing an jeder Wand etwas, das man brauchen konnte. Über "
    u"der Hobelbank lagen die Stechbeitel der Größe nach, daneben Schraubzwingen, Feilen und ein "
    u"Glas voller rostiger Nägel, die er „für später“ aufhob. Wenn er ein Stück Holz in die Hand "
    u"nahm, strich er zuerst mit dem Daumen über die Maserung, als müsse er sie begrüßen. Ich "
    u"durfte fegen, Leim rühren und, wenn ich lange genug gefragt hatte, auch einmal sägen. „Nicht "
    u"drücken“, sagte er dann, „die Säge weiß schon, wohin sie will.“ Für einen Stuhl brauchte er "
    u"zwei Wochen, für ein Vogelhäuschen einen Nachmittag. Verkauft hat er selten etwas; das "
    u"meiste verschenkte er, und noch heute sitzen in unserer Straße Leute auf seinen Stühlen.";

// German: a changed appointment.
inline constexpr char16_t GERMAN_SHORT[] =
    u"Die Führung fällt heute leider aus; wir öffnen am Samstag früher für Sie.";

// French: a year in the life of a mill.
inline constexpr char16_t FRENCH_LONG[] =
    u"Le moulin est posé au bord de la rivière comme un gros animal endormi. On l'aperçoit de "
    u"loin, derrière le rideau de peupliers, avec son toit d'ardoises et sa roue immobile couverte "
    u"de mousse. Personne ne sait exactement quand il a été construit ; le notaire parlait d'un "
    u"acte très ancien, mais le papier avait été mangé par l'humidité. Ce qui est sûr, c'est que "
    u"cinq générations de meuniers y ont vécu, et que la dernière farine en est sortie l'année où "
    u"l'école a fermé.\n\nQuand nous l'avons acheté, il n'y avait plus de fenêtres. Les "
    u"hirondelles entraient et sortaient à leur gré, un sureau poussait au milieu de la cuisine, "
    u"et l'escalier s'arrêtait à mi-hauteur, comme s'il avait changé d'avis. Mes amis ont cru à "
    u"une plaisanterie. Ma sœur, elle, a fait le tour de la maison sans rien dire, puis elle a "
    u"retroussé ses manches et demandé où se trouvait la pelle. C'est ainsi que tout a commencé."
    u"\n\nL'hiver fut consacré au toit. Il fallait profiter des jours sans pluie, et il y en eut "
    u"peu. Le charpentier, un homme sec et moqueur qui s'appelait Désiré, arrivait à l'aube avec "
    u"son chien et une bouteille de café brûlant. Il nous apprit à choisir les chevrons, à "
    u"reconnaître le chêne du châtaignier à l'odeur, à ne jamais laisser traîner un clou. « Une "
    u"maison, disait-il, ça commence par le chapeau. » Le soir, nous avions mal partout et nous "
    u"dînions d'une soupe devant la cheminée, trop fatigués pour parler.\n\nAu printemps, la "
    u"rivière déborda. Ce n'était pas une catastrophe, seulement une visite : elle entra par la "
    u"porte de derrière, traversa la salle basse et ressortit de l'autre côté, en laissant sur le "
    u"sol un tapis de boue et deux truites étonnées. Nous comprîmes alors pourquoi les anciens "
    u"avaient placé la chambre à l'étage et le four sur une estrade de pierre. Depuis, nous ne "
    u"rangeons plus rien d'important au rez-de-chaussée entre février et avril, et nous notons au "
    u"crayon, près de l'évier, la hauteur atteinte par l'eau.\n\nL'été apporta les visiteurs. Des "
    u"cousins que je n'avais pas vus depuis l'enfance vinrent « donner un coup de main », ce qui "
    u"signifiait surtout se baigner sous la chute et dévorer des tartines. Il y eut pourtant de "
    u"belles journées de travail : on chaula les murs, on posa des carreaux, on remonta pierre par "
    u"pierre le petit pont qui menait au potager. Les enfants peignirent la barrière en bleu, sans "
    u"demander l'avis de personne, et ce bleu est devenu la couleur de la maison.\n\nEnfin, au "
    u"mois d'octobre, la roue se remit à tourner. Désiré avait remplacé les aubes pourries, "
    u"graissé l'axe, dégagé le bief encombré de branches. Quand il leva la vanne, rien ne bougea "
    u"d'abord ; puis il y eut un long gémissement, un frémissement dans les planches, et la roue "
    u"partit, lentement, en secouant sa mousse. Tout le village était là. Une très vieille dame, "
    u"assise sur une chaise qu'on lui avait apportée, pleurait sans se cacher : elle avait entendu "
    u"ce bruit chaque jour de sa jeunesse, et elle ne pensait pas le réentendre.\n\nLe boulanger "
    u"du bourg, qui passait par là avec sa camionnette, arrêta le moteur pour mieux écouter. Il "
    u"demanda si l'on pourrait moudre, un jour, le blé de son frère. Nous avons dit oui sans "
    u"réfléchir, et c'est lui qui, l'année suivante, nous a prêté des meules neuves. Depuis ce "
    u"temps, il vient chaque dimanche vérifier la finesse de la mouture entre le pouce et l'index, "
    u"hoche la tête d'un air sévère et repart avec un sac qu'il refuse de payer. On ne s'est "
    u"jamais fâché.\n\nAujourd'hui, nous ne faisons pas de farine, ou si peu : quelques sacs pour "
    u"le plaisir, à la fête de la Saint-Martin. Mais la roue éclaire la cuisine et chauffe l'eau, "
    u"ce qui n'est déjà pas mal. Le matin, avant de descendre, j'écoute si elle tourne rond. C'est "
    u"elle qui me dit le temps qu'il a fait dans la montagne, s'il a plu, s'il a neigé, et combien "
    u"de jours il nous reste avant la prochaine visite de la rivière.";

// Spanish: a school on a hill.
inline constexpr char16_t SPANISH[] =
    u"La escuela del pueblo está en lo alto de una colina, y para llegar hay que subir ciento doce "
    u"escalones. Los niños los cuentan en voz alta cada mañana, y siempre hay alguno que se "
    u"equivoca a propósito. La maestra, doña Inés, llegó hace veintiséis años pensando quedarse un "
    u"solo curso. En el patio crece una higuera enorme bajo la cual se dan las clases cuando "
    u"aprieta el calor. ¿Qué se aprende allí? A leer, a sumar y, según dice ella, a escuchar cómo "
    u"cambia el viento. El año pasado faltó poco para que la cerraran por falta de alumnos, pero "
    u"tres familias jóvenes volvieron de la ciudad y ahora las voces llenan otra vez la cuesta.";

// Portuguese: fishermen and a lighthouse.
inline constexpr char16_t PORTUGUESE[] =
    u"O farol foi aceso pela primeira vez numa noite de tempestade, há mais de cem anos. Desde "
    u"então, os pescadores da aldeia não saem para o mar sem olhar para a sua luz. Hoje já não há "
    u"faroleiro: tudo funciona sozinho, com um motor e uma lâmpada que dura muito tempo. Mesmo "
    u"assim, a senhora Conceição continua a subir as escadas todas as semanas para limpar os "
    u"vidros, porque a mãe dela fazia o mesmo e porque, segundo diz, ninguém confia numa luz que "
    u"não é cuidada por mãos humanas.";

// Italian: a baker at night.
inline constexpr char16_t ITALIAN[] =
    u"Il forno di Matteo si accende quando gli altri vanno a dormire. Alle undici di sera arriva "
    u"la farina, a mezzanotte l'impasto è già pronto, e verso le tre il profumo del pane scende "
    u"lungo il vicolo fino alla piazza. Chi torna tardi bussa alla porticina laterale e riceve una "
    u"focaccia ancora calda, perché così è sempre stato e nessuno ha mai pensato di cambiare. La "
    u"città è cresciuta, i negozi hanno chiuso e riaperto, però il forno è rimasto lì, con la "
    u"stessa pala di legno e lo stesso lievito che il nonno portò dalla montagna.";

// Danish: a bicycle and a storm.
inline constexpr char16_t DANISH[] =
    u"Da stormen kom, stod min cykel uden for bageren på hjørnet. Næste morgen lå den på den anden "
    u"side af pladsen, oven på en bænk, som om nogen forsigtigt havde løftet den derop. Bageren lo "
    u"og sagde, at vinden måtte have været sulten. Han gav mig et rundstykke med ost og fortalte, "
    u"at han havde boet ved havnen i tredive år og aldrig før havde set bølgerne slå ind over "
    u"molen. Først hen på eftermiddagen blev det stille, og så gik hele byen ned for at se på "
    u"vandet.";

// Swedish: a cottage by a lake.
inline constexpr char16_t SWEDISH[] =
    u"Stugan vid sjön är liten och röd, och nyckeln ligger alltid under den tredje blomkrukan från "
    u"vänster. Vi åker dit så fort isen har gått och båten kan läggas i. På morgnarna är det så "
    u"tyst att man hör gäddorna slå i vassen. Farfar lagar gröt på vedspisen och berättar för "
    u"barnen om älgen som en gång åt upp hela potatislandet. När det regnar spelar vi kort, när "
    u"solen skiner badar vi från bryggan, och när hösten kommer är det ingen som vill åka hem.";

// Finnish: a sauna evening.
inline constexpr char16_t FINNISH[] =
    u"Lauantaina sauna lämmitetään jo iltapäivällä, sillä vanha kiuas ottaa aikansa. Isä kantaa "
    u"puut sisään, äiti tekee vihdat ja lapset hakevat vettä järvestä. Kun löyly on pehmeää, "
    u"kukaan ei pidä kiirettä. Keskustellaan vähän, ollaan enimmäkseen hiljaa, ja välillä juostaan "
    u"laiturille uimaan. Illalla istutaan kuistilla pyyhkeet hartioilla, syödään makkaraa ja "
    u"katsotaan, miten sumu nousee hitaasti veden yllä.";

// Icelandic: sheep are gathered.
inline constexpr char16_t ICELANDIC[] =
    u"Á haustin er féð sótt á fjöll og allir sem vettlingi geta valdið taka þátt. Lagt er af stað "
    u"fyrir dögun, með nesti í töskum og hlý föt, því veðrið getur breyst á svipstundu. Hundarnir "
    u"þekkja leiðina betur en mennirnir. Þegar safnið kemur niður í dalinn heyrist jarmurinn "
    u"langar leiðir, og þá er kveikt upp í stóru eldhúsinu. Um kvöldið er sungið, sögur sagðar og "
    u"börnin fá að vaka lengur en venjulega.";

// English: a lost umbrella.
inline constexpr char16_t ENGLISH[] =
    u"I left my umbrella on the bus last Tuesday, and by Wednesday it had come back to me. The "
    u"driver had read the label inside the handle, driven past our street at the end of his shift "
    u"and hung it on the gate. There was no note, only a dry leaf stuck to the cloth. I have tried "
    u"to thank him since, but he waves me away and says that umbrellas know where they live. It "
    u"rained all through that week, and I have never enjoyed bad weather more.";

// English: the same loss with printers' quotation marks.
inline constexpr char16_t ENGLISH_TYPOGRAPHIC[] =
    u"“I left it on the bus,” she said, “and by Wednesday it had come back to me.” The driver – a "
    u"tall man who didn’t talk much – had read the label, driven past our street and hung the "
    u"umbrella on the gate. There was no note… only a dry leaf stuck to the cloth. He won’t take "
    u"any thanks; “umbrellas know where they live,” he says, and shuts the door. It rained all "
    u"through that week, and I’ve never enjoyed bad weather more.";

// Thai: a boat on a canal.
inline constexpr char16_t THAI[] =
    u"ท\u0E38กเช\u0E49าค\u0E38ณยายจะพายเร\u0E37อลำเล\u0E47กไปตามคลองเพ\u0E37\u0E48อขายขนมหวาน "
    u"บ\u0E49านเร\u0E37อนร\u0E34มน\u0E49ำย\u0E31งเง\u0E35ยบสงบ "
    u"ม\u0E35เพ\u0E35ยงเส\u0E35ยงไม\u0E49พายก\u0E31บเส\u0E35ยงนกร\u0E49อง เด\u0E47ก ๆ "
    u"ท\u0E35\u0E48รอไปโรงเร\u0E35ยนจะโบกม\u0E37อเร\u0E35ยกจากท\u0E48าน\u0E49ำ "
    u"ค\u0E38ณยายร\u0E39\u0E49ด\u0E35ว\u0E48าใครชอบขนมชน\u0E34ดไหน "
    u"และม\u0E31กจะแถมให\u0E49อ\u0E35กหน\u0E36\u0E48งช\u0E34\u0E49นเสมอ "
    u"เม\u0E37\u0E48อก\u0E48อนม\u0E35เร\u0E37อขายของหลายส\u0E34บลำ "
    u"แต\u0E48ตอนน\u0E35\u0E49เหล\u0E37อเพ\u0E35ยงสองสามลำเท\u0E48าน\u0E31\u0E49น "
    u"ถนนสายใหม\u0E48ทำให\u0E49ผ\u0E39\u0E49คนเด\u0E34นทางสะดวกข\u0E36\u0E49น "
    u"แต\u0E48ค\u0E38ณยายบอกว\u0E48าน\u0E49ำในคลองย\u0E31งใสเหม\u0E37อนเด\u0E34ม "
    u"และตราบใดท\u0E35\u0E48ย\u0E31งพายไหว ก\u0E47จะมาท\u0E38กว\u0E31น";

// Thai: a shop is closed.
inline constexpr char16_t THAI_SHORT[] =
    u"ร\u0E49านป\u0E34ดท\u0E38กว\u0E31นจ\u0E31นทร\u0E4C "
    u"กร\u0E38ณาโทรศ\u0E31พท\u0E4Cจองโต\u0E4Aะล\u0E48วงหน\u0E49าหน\u0E36\u0E48งว\u0E31น ขอบค\u0E38"
    u"ณมากท\u0E35\u0E48มาอ\u0E38ดหน\u0E38นร\u0E49านของเรา";

// Latvian: mushrooms and a dog.
inline constexpr char16_t LATVIAN[] =
    u"Rudenī mēs ar vecmāmiņu braucam uz mežu sēņot. Viņa pazīst katru taku un zina, kur aug "
    u"vislielākās baravikas, bet nevienam to nestāsta. Suns skrien pa priekšu, šņaukā sūnas un "
    u"reizēm pazūd krūmos. Pusdienlaikā apsēžamies uz krituša koka, ēdam maizi ar sieru un dzeram "
    u"karstu tēju no termosa. Mājās sēnes jātīra līdz vēlam vakaram, taču neviens nesūdzas, jo "
    u"ziemā tās garšos vēl labāk.";

// Lithuanian: a mill pond in winter.
inline constexpr char16_t LITHUANIAN[] =
    u"Žiemą, kai malūno tvenkinys užšąla, visas kaimas susirenka čiuožti. Vaikai nušluoja sniegą, "
    u"vyresnieji atneša žibintų ir karštos arbatos su medumi. Senasis malūnininkas sėdi ant "
    u"suolelio ir šypsodamasis pasakoja, kaip jaunystėje per vieną naktį pėsčiomis perėjo per visą "
    u"ežerą. Niekas nežino, ar tai tiesa, bet klausytis įdomu. Kai sutemsta, ledas ima tyliai "
    u"traškėti, ir tada visi skuba namo, kur jau kvepia šviežiai keptais pyragais.";

// Estonian: a library bus.
inline constexpr char16_t ESTONIAN[] =
    u"Raamatubuss sõidab meie külla iga kahe nädala tagant neljapäeval. Juht on ühtlasi ka "
    u"raamatukoguhoidja ja teab täpselt, mida keegi lugeda armastab. Vanaema võtab alati kolm "
    u"paksu romaani, mina laenutan reisijutte ja väike õde tahab ainult pildiraamatuid loomadest. "
    u"Talvel, kui tee on lund täis, jääb buss vahel tulemata, ja siis vahetavad naabrid raamatuid "
    u"omavahel. Nõnda on mõni lugu käinud läbi kõigi külamajade.";

// Vietnamese: a bowl of soup at dawn (tone marks as combining characters, as windows-1258 has
// them).
inline constexpr char16_t VIETNAMESE[] =
    u"Qua\u0301n phơ\u0309 cu\u0309a ba\u0300 Lan mơ\u0309 cư\u0309a tư\u0300 năm giơ\u0300 "
    u"sa\u0301ng, khi đươ\u0300ng phô\u0301 co\u0300n vă\u0301ng va\u0300 đe\u0300n chưa "
    u"tă\u0301t. Nô\u0300i nươ\u0301c du\u0300ng đa\u0303 đươ\u0323c ninh suô\u0301t đêm vơ\u0301i "
    u"xương, gư\u0300ng nươ\u0301ng va\u0300 va\u0300i ca\u0301nh hô\u0300i. Kha\u0301ch quen "
    u"không câ\u0300n go\u0323i mo\u0301n, chi\u0309 ngô\u0300i xuô\u0301ng la\u0300 ba\u0300 "
    u"đa\u0303 biê\u0301t ai thi\u0301ch nhiê\u0300u ha\u0300nh, ai không ăn ơ\u0301t. Va\u0300o "
    u"như\u0303ng nga\u0300y mưa, mo\u0323i ngươ\u0300i ngô\u0300i sa\u0301t nhau dươ\u0301i "
    u"tâ\u0301m ba\u0323t xanh, vư\u0300a ăn vư\u0300a kê\u0309 chuyê\u0323n. Ba\u0300 "
    u"thươ\u0300ng no\u0301i ră\u0300ng mô\u0323t ba\u0301t phơ\u0309 ngon không chi\u0309 "
    u"nhơ\u0300 gia vi\u0323 ma\u0300 co\u0300n nhơ\u0300 sư\u0323 kiên nhâ\u0303n cu\u0309a "
    u"ngươ\u0300i nâ\u0301u.";
// clang-format on

}  // namespace CharsetTexts

/// The text in another charset. A character that the charset lacks fails the running test.
inline std::string EncodeText(std::u16string_view text, const char* converterName) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(converterName, &status);
    ucnv_setFromUCallBack(converter, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    std::string bytes(text.size() * 8 + 16, '\0');
    const std::int32_t size = ucnv_fromUChars(converter, bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                              text.data(), static_cast<std::int32_t>(text.size()), &status);
    ucnv_close(converter);
    EXPECT_TRUE(U_SUCCESS(status)) << converterName << ": " << u_errorName(status);
    bytes.resize(U_SUCCESS(status) ? static_cast<std::size_t>(size) : 0);
    return bytes;
}

/// The bytes read in a charset. Bytes without a meaning become U+FFFD; a converter that does not
/// exist fails the running test.
inline std::u16string DecodeText(std::string_view bytes, const char* converterName) {
    UErrorCode status = U_ZERO_ERROR;
    UConverter* converter = ucnv_open(converterName, &status);
    std::u16string text(bytes.size() * 2 + 16, u'\0');
    const std::int32_t size = ucnv_toUChars(converter, text.data(), static_cast<std::int32_t>(text.size()),
                                            bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
    ucnv_close(converter);
    EXPECT_TRUE(U_SUCCESS(status)) << converterName << ": " << u_errorName(status);
    text.resize(U_SUCCESS(status) ? static_cast<std::size_t>(size) : 0);
    return text;
}

/// All samples, 60 characters to 4 KB each.
inline std::vector<CharsetSample> MakeCharsetSamples() {
    using namespace CharsetTexts;
    struct Row {
        const char* note;
        const char* language;
        const char* charsetName;  ///< known to ICU
        StringNS::CharSet::Code code;
        std::u16string_view text;
        std::size_t cut = 0;  ///< bytes missing at the end
    };
    const Row rows[] = {
        {"Russian letter, windows-1251", "Russian", "windows-1251", 1251, RUSSIAN_LONG},
        {"Russian letter, UTF-8", "Russian", "UTF-8", 65001, RUSSIAN_LONG},
        {"Russian letter, UTF-8 cut inside a character", "Russian", "UTF-8", 65001, RUSSIAN_LONG, 1},
        {"Russian notice, windows-1251", "Russian", "windows-1251", 1251, RUSSIAN},
        {"Russian notice, KOI8-R", "Russian", "KOI8-R", 20866, RUSSIAN},
        {"Russian notice, ISO-8859-5", "Russian", "ISO-8859-5", 28595, RUSSIAN},
        {"Russian notice, IBM866", "Russian", "IBM866", 866, RUSSIAN},
        {"Russian notice, UTF-16LE", "Russian", "UTF-16LE", 1200, RUSSIAN},
        {"Russian sentence, windows-1251", "Russian", "windows-1251", 1251, RUSSIAN_SHORT},
        {"Russian sentence, KOI8-R", "Russian", "KOI8-R", 20866, RUSSIAN_SHORT},
        {"Ukrainian walk, windows-1251", "Ukrainian", "windows-1251", 1251, UKRAINIAN},
        {"Bulgarian recipe, windows-1251", "Bulgarian", "windows-1251", 1251, BULGARIAN},
        {"Japanese story, Shift_JIS", "Japanese", "Shift_JIS", 932, JAPANESE},
        {"Japanese story, EUC-JP", "Japanese", "EUC-JP", 51932, JAPANESE},
        {"Japanese story, ISO-2022-JP", "Japanese", "ISO-2022-JP", 50221, JAPANESE},
        {"Japanese story, UTF-8", "Japanese", "UTF-8", 65001, JAPANESE},
        {"Japanese story, UTF-8 cut inside a character", "Japanese", "UTF-8", 65001, JAPANESE, 1},
        {"Japanese story, UTF-16LE", "Japanese", "UTF-16LE", 1200, JAPANESE},
        {"Japanese notice, Shift_JIS", "Japanese", "Shift_JIS", 932, JAPANESE_SHORT},
        {"Japanese notice, EUC-JP", "Japanese", "EUC-JP", 51932, JAPANESE_SHORT},
        {"Japanese notice, ISO-2022-JP", "Japanese", "ISO-2022-JP", 50221, JAPANESE_SHORT},
        {"Chinese story, GB18030", "Chinese (simplified)", "GB18030", 54936, CHINESE},
        {"Chinese story, UTF-8", "Chinese (simplified)", "UTF-8", 65001, CHINESE},
        {"Chinese notice, GB18030", "Chinese (simplified)", "GB18030", 54936, CHINESE_SHORT},
        {"Taiwanese story, Big5", "Chinese (traditional)", "Big5", 950, TAIWANESE},
        {"Korean story, EUC-KR", "Korean", "EUC-KR", 949, KOREAN},
        {"Korean story, ISO-2022-KR", "Korean", "ISO-2022-KR", 50225, KOREAN},
        {"Korean request, EUC-KR", "Korean", "EUC-KR", 949, KOREAN_SHORT},
        {"Greek story, windows-1253", "Greek", "windows-1253", 1253, GREEK},
        {"Greek story, ISO-8859-7", "Greek", "ISO-8859-7", 28597, GREEK},
        {"Greek notice, windows-1253", "Greek", "windows-1253", 1253, GREEK_ACCENTS},
        {"Greek notice, ISO-8859-7", "Greek", "ISO-8859-7", 28597, GREEK_ACCENTS},
        {"Hebrew story, windows-1255", "Hebrew", "windows-1255", 1255, HEBREW},
        {"Arabic story, windows-1256", "Arabic", "windows-1256", 1256, ARABIC},
        {"Turkish story, windows-1254", "Turkish", "windows-1254", 1254, TURKISH},
        {"Polish story, windows-1250", "Polish", "windows-1250", 1250, POLISH},
        {"Polish story, ISO-8859-2", "Polish", "ISO-8859-2", 28592, POLISH},
        {"Czech story, windows-1250", "Czech", "windows-1250", 1250, CZECH},
        {"Czech story, ISO-8859-2", "Czech", "ISO-8859-2", 28592, CZECH},
        {"Hungarian story, windows-1250", "Hungarian", "windows-1250", 1250, HUNGARIAN},
        {"Romanian letter, windows-1250", "Romanian", "windows-1250", 1250, ROMANIAN},
        {"German story, windows-1252", "German", "windows-1252", 1252, GERMAN},
        {"German sentence, ISO-8859-1", "German", "ISO-8859-1", 1252, GERMAN_SHORT},
        {"French story, windows-1252", "French", "windows-1252", 1252, FRENCH_LONG},
        {"French story, UTF-8", "French", "UTF-8", 65001, FRENCH_LONG},
        {"Spanish story, ISO-8859-1", "Spanish", "ISO-8859-1", 1252, SPANISH},
        {"Portuguese story, ISO-8859-1", "Portuguese", "ISO-8859-1", 1252, PORTUGUESE},
        {"Italian story, ISO-8859-1", "Italian", "ISO-8859-1", 1252, ITALIAN},
        {"Danish story, ISO-8859-1", "Danish", "ISO-8859-1", 1252, DANISH},
        {"Swedish story, ISO-8859-1", "Swedish", "ISO-8859-1", 1252, SWEDISH},
        {"Finnish story, ISO-8859-1", "Finnish", "ISO-8859-1", 1252, FINNISH},
        {"Icelandic story, ISO-8859-1", "Icelandic", "ISO-8859-1", 1252, ICELANDIC},
        {"English story, US-ASCII", "English", "US-ASCII", 20127, ENGLISH},
        {"English story, UTF-16LE", "English", "UTF-16LE", 1200, ENGLISH},
        {"English quotation marks, windows-1252", "English", "windows-1252", 1252, ENGLISH_TYPOGRAPHIC},
        {"English quotation marks, UTF-8", "English", "UTF-8", 65001, ENGLISH_TYPOGRAPHIC},
        {"Thai story, windows-874", "Thai", "windows-874", 874, THAI},
        {"Thai notice, windows-874", "Thai", "windows-874", 874, THAI_SHORT},
        {"Latvian story, windows-1257", "Latvian", "windows-1257", 1257, LATVIAN},
        {"Lithuanian story, windows-1257", "Lithuanian", "windows-1257", 1257, LITHUANIAN},
        {"Estonian story, windows-1257", "Estonian", "windows-1257", 1257, ESTONIAN},
        {"Vietnamese story, windows-1258", "Vietnamese", "windows-1258", 1258, VIETNAMESE},
    };
    std::vector<CharsetSample> samples;
    for (const Row& row : rows) {
        CharsetSample sample{row.note,
                             row.language,
                             row.charsetName,
                             row.code,
                             EncodeText(row.text, row.charsetName),
                             std::u16string(row.text)};
        sample.bytes.resize(sample.bytes.size() - row.cut);
        samples.push_back(std::move(sample));
    }
    return samples;
}

/// The sample at the end of a page that begins with 12 KB of script. The page ends with the sample,
/// as a read buffer may end anywhere.
inline std::string PutAfterScript(const CharsetSample& sample) {
    std::string markup = "<!DOCTYPE html>\n<html>\n<head>\n<script type=\"text/javascript\">\n";
    const std::size_t scriptStart = markup.size();
    for (int panel = 1; markup.size() - scriptStart < 12 * 1024; ++panel) {
        const std::string number = std::to_string(panel);
        markup +=
            "function showPanel" + number + "(panel, count) {\n    if (count < " + number + " && panel.rows > 1) {\n";
        markup += "        panel.innerHTML = '<b class=\"note\">' + count + '</b> of ' + panel.rows;\n    }\n";
        markup += "    panel.style.width = (count * " + number +
                  ") % 100 + \"px\";  // the last panel stays open\n    return panel;\n}\n";
    }
    markup += "</script>\n</head>\n<body>\n<div class=\"text\"><p>";
    if (sample.code == StringNS::CharSet::UTF16_LE)
        markup = EncodeText(std::u16string(markup.begin(), markup.end()), "UTF-16LE");
    return markup + sample.bytes;
}

}  // namespace Kestra::Test
