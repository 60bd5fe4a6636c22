#include "platform/linux/session/DesktopIcons.h"

#include "platform/linux/busSupport/ScriptedAgent.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <sys/stat.h>

namespace orvo {
namespace {

using test::Program;
using test::runUntil;
using test::ScriptedAgent;

class DesktopIconsTest : public ::testing::Test {
 protected:
  std::optional<Picture> iconOf(int process, int size) {
    int answers = 0;
    std::optional<Picture> picture;
    icons_.icon(process, size, [&](const std::optional<Picture>& answer) {
      ++answers;
      picture = answer;
    });
    EXPECT_EQ(answers, 0) << "answered inside the call";
    EXPECT_TRUE(runUntil([&] { return answers > 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(answers, 1);
    return picture;
  }

  static QString saveIcon(const QString& name, int width, int height) {
    QString path = test::writeFile(name, {});
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::red);
    EXPECT_TRUE(image.save(path));
    return path;
  }

  // Of few pixels, and readable to its end.
  static QByteArray heavyPicture() {
    return QByteArray("#define a_width 8\n#define a_height 8\nstatic char a_bits[] = {1,1,1,1,1,1,1,1};\n")
        .append(5'000'000, ' ');
  }

  // Nobody ever writes into it.
  static QString makePipe(const QString& name) {
    QString path = test::writeFile(name, {});
    QFile::remove(path);
    EXPECT_EQ(::mkfifo(path.toUtf8().constData(), S_IRUSR | S_IWUSR), 0);
    return path;
  }

  DesktopIcons icons_;
};

TEST_F(DesktopIconsTest, AnIconFromADesktopEntryIsScaledAndAbsurdFilesAreRefused) {
  struct Case {
    QString icon;
    int size;
    std::optional<std::pair<int, int>> expected;
  };
  saveIcon("pixmaps/named.png", 64, 32);
  for (const auto& [icon, size, expected] :
       {Case{saveIcon("icons/wide.png", 400, 100), 48, std::pair(48, 12)},
        Case{saveIcon("icons/large.png", 2000, 2000), 4000, std::pair(512, 512)}, Case{"named", 32, std::pair(32, 16)},
        Case{saveIcon("icons/absurd.png", 2049, 1), 48, std::nullopt},
        Case{test::writeFile("icons/heavy.xbm", heavyPicture()), 48, std::nullopt},
        Case{makePipe("icons/pipe"), 48, std::nullopt},
        Case{test::writeFile("icons/broken.png", "not a picture"), 48, std::nullopt},
        Case{"unheard-of", 48, std::nullopt}}) {
    test::writeFile("applications/sleeper" + QString::number(size) + QString::number(qHash(icon)) + ".desktop",
                    "[Desktop Entry]\nType=Application\nName=Sleep\nExec=sleep 600\nIcon=" + icon.toUtf8() + "\n");
    const auto program = test::sleeper();
    const auto picture = iconOf(program->pid(), size);
    QDir(test::inHome("applications")).removeRecursively();
    ASSERT_EQ(picture.has_value(), expected.has_value()) << icon.toStdString();
    if (!picture) continue;
    EXPECT_EQ(std::pair(picture->width, picture->height), *expected) << icon.toStdString();
    EXPECT_EQ(picture->pixels.front(), 0xFFFF0000U);
    EXPECT_EQ(picture->pixels.size(), static_cast<std::size_t>(picture->width * picture->height));
  }
}

TEST_F(DesktopIconsTest, WithoutOneTheTrayItemsOwnPictureIsTaken) {
  ScriptedAgent agent;
  struct Case {
    QStringList peer;
    std::optional<std::pair<int, int>> expected;
    std::uint32_t pixel = 0;
  };
  saveIcon("own/theme/22/peer-icon.png", 22, 22);
  const QString named = "--icon=" + test::inHome("own") + "/peer-icon";
  for (const auto& [peer, expected, pixel] :
       {Case{{"--pixmap=fitting"}, std::pair(24, 18), 0xFF0A141EU}, Case{{"--pixmap=absurd"}, std::nullopt},
        Case{{"--pixmap=absurd", named}, std::pair(24, 24), 0xFFFF0000U}, Case{{"--silent"}, std::nullopt}}) {
    Program program(peer);
    agent.setItems({{program.busName(), static_cast<quint32>(program.pid()), {}}});
    const auto picture = iconOf(program.pid(), 24);
    ASSERT_EQ(picture.has_value(), expected.has_value()) << peer.join(' ').toStdString();
    if (!picture) continue;
    EXPECT_EQ(std::pair(picture->width, picture->height), *expected);
    EXPECT_EQ(picture->pixels.front(), pixel);
  }
  auto program = test::sleeper();
  EXPECT_FALSE(iconOf(program->pid(), 24)) << "no item";
  const int gone = program->pid();
  program->end();
  EXPECT_FALSE(iconOf(gone, 24));
}

}  // namespace
}  // namespace orvo
