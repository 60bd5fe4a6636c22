#include "platform/linux/session/DesktopIcons.h"

#include "platform/linux/busSupport/TestSession.h"

#include <QDir>
#include <QIcon>
#include <QImage>

#include <sys/stat.h>

namespace orvo {
namespace {

using test::runUntil;

// Its first pixel, width and height; empty without a picture.
std::string iconOf(int process, int size) {
  DesktopIcons icons;
  std::vector<std::string> answers;
  icons.icon(process, size, [&](const std::optional<Picture>& picture) {
    answers.emplace_back();
    if (!picture) return;
    EXPECT_EQ(picture->pixels.size(), static_cast<std::size_t>(picture->width * picture->height));
    answers.back() =
        QString::asprintf("%x %dx%d", picture->pixels.front(), picture->width, picture->height).toStdString();
  });
  EXPECT_TRUE(answers.empty()) << "answered inside the call";
  EXPECT_TRUE(runUntil([&] { return !answers.empty(); }));
  QCoreApplication::processEvents();
  EXPECT_EQ(answers.size(), 1U);
  return answers.front();
}

QString saveIcon(const QString& name, int width, int height) {
  QString path = test::writeFile(name, {});
  QImage image(width, height, QImage::Format_ARGB32);
  image.fill(Qt::red);
  EXPECT_TRUE(image.save(path));
  return path;
}

TEST(DesktopIconsTest, AnIconFromADesktopEntryIsScaledAndWhatIsNoReasonablePictureIsRefused) {
  saveIcon("pixmaps/named.png", 64, 32);
  const QByteArray small("#define a_width 8\n#define a_height 8\nstatic char a_bits[] = {1,1,1,1,1,1,1,1};\n");
  test::writeFile("icons/hicolor/index.theme", "[Icon Theme]\nName=Hicolor\nDirectories=22\n[22]\nSize=22\n");
  saveIcon("icons/hicolor/22/themed.png", 22, 11);
  QIcon::setThemeSearchPaths({test::inHome("icons")});
  QIcon::setThemeName("hicolor");
  for (const QString pipe : {"pipe.png", "icons/hicolor/22/piped.png"})  // nobody writes into them
    EXPECT_EQ(::mkfifo(test::inHome(pipe).toUtf8().constData(), S_IRUSR | S_IWUSR), 0);
  const struct {
    QString icon;
    int size;
    std::string expected;
  } cases[]{{saveIcon("wide.png", 400, 100), 48, "ffff0000 48x12"},
            {saveIcon("large.png", 2000, 2000), 4000, "ffff0000 512x512"},
            {"named", 32, "ffff0000 32x16"},
            {"themed", 44, "ffff0000 44x22"},
            {"piped", 22, ""},
            {saveIcon("absurd.png", 2049, 1), 48, ""},
            {test::writeFile("heavy.xbm", small + QByteArray(5'000'000, ' ')), 48, ""},
            {test::inHome("pipe.png"), 48, ""},
            {test::writeFile("broken.png", "not a picture"), 48, ""},
            {"unheard-of", 48, ""}};
  for (const auto& [icon, size, expected] : cases) {
    test::writeFile("applications/" + QFileInfo(icon).baseName() + ".desktop",
                    "[Desktop Entry]\nType=Application\nName=Sleep\nExec=sleep 600\nIcon=" + icon.toUtf8() + "\n");
    EXPECT_EQ(iconOf(test::sleeper()->pid(), size), expected) << icon.toStdString();
    QDir(test::inHome("applications")).removeRecursively();
  }
}

TEST(DesktopIconsTest, WithoutOneTheTrayItemsOwnPictureIsTaken) {
  const auto agent = test::agent();
  saveIcon("own/theme/22/peer-icon.png", 22, 22);
  const QString absurd =
      "IconPixmap=('a(iiay)', [(513, 1, bytes(2052)), (-4, -4, bytes(64)), (8, 8, bytes(252)), (0, 0, b'')])";
  const QString named =
      QStringLiteral(", IconName=('s', 'peer-icon'), IconThemePath=('s', '%1')").arg(test::inHome("own"));
  for (const auto& [properties, expected] :
       {std::pair<QString, std::string>{"IconPixmap=pixels('ff0a141e', (16, 16), (32, 24), (128, 128))",
                                        "ff0a141e 24x18"},
        {absurd, ""},
        {absurd + named, "ffff0000 24x24"},
        {"", ""}}) {
    const auto program = test::peer("program");
    program->ask("describe(" + properties + ")");
    program->ask("register('/item')");
    if (properties.isEmpty()) program->signal(SIGSTOP);
    EXPECT_EQ(iconOf(program->pid(), 24), expected) << properties.toStdString();
  }
  const auto program = test::sleeper();
  EXPECT_EQ(iconOf(program->pid(), 24), "") << "no item";
  const int gone = program->pid();
  program->end();
  EXPECT_EQ(iconOf(gone, 24), "");
}

}  // namespace
}  // namespace orvo
