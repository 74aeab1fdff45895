// Stands in for a DAW on a test's desktop: a real process with a real window, open session files
// and bounces that grow at a DAW's pace. It reads commands from standard input, one per line with
// percent-encoded arguments, and prints a line when it has executed a command:
//
//   open PATH        close PATH        bounce PATH BYTES PORTIONS MILLISECONDS        quit
//
// A bounce has been executed when the file is complete. The arguments of the program are the
// window's title and the first session file to open.

#include <QApplication>
#include <QFile>
#include <QPainter>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>

#include <iostream>
#include <map>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

/// The arrangement of a song, drawn just well enough to be recognised in a picture.
class Arrangement : public QWidget {
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), 0x2b2d30);
        for (int track = 0; track < 6; ++track) {
            const int top = 10 + track * 74;
            const int begin = 150 + track % 3 * 90;
            painter.fillRect(8, top, 130, 68, 0x3a3d41);
            painter.fillRect(
                begin, top, width() - begin - 14, 68, QColor::fromHsl(track * 57, 110, 150));
        }
    }
};

/// Writes a file as a DAW does: a header without lengths, then the audio in portions, and at the
/// end the complete header.
class Bounce : public QObject {
public:
    Bounce(QByteArray encodedPath, quint32 bytes, quint32 portions, int milliseconds)
        : name(std::move(encodedPath)), audioBytes(bytes), portion(bytes / portions)
    {
        file.open(::fopen(QByteArray::fromPercentEncoding(name).constData(), "wb"),
            QFile::WriteOnly | QFile::Unbuffered, QFile::AutoCloseHandle);
        file.write(QByteArray(headerSize, '\0'));
        QObject::connect(&timer, &QTimer::timeout, this, &Bounce::writePortion);
        timer.start(milliseconds);
    }

private:
    void writePortion()
    {
        QByteArray audio(static_cast<int>(std::min(portion, audioBytes - written)), '\0');
        for (char& byte : audio)
            byte = static_cast<char>((noise = noise * 1664525 + 1013904223) >> 24);
        written += static_cast<quint32>(file.write(audio));
        if (written < audioBytes)
            return;
        file.seek(0);
        file.write(QByteArray(headerSize, 'R'));
        file.close();
        std::cout << "bounce " << name.constData() << std::endl;
        deleteLater();
    }

    static constexpr int headerSize = 44;

    QByteArray name;
    QFile file;
    quint32 audioBytes;
    quint32 portion;
    quint32 written = 0;
    quint32 noise = 1;
    QTimer timer;
};

struct Closer {
    void operator()(FILE* file) const { ::fclose(file); }
};
std::map<QByteArray, std::unique_ptr<FILE, Closer>> sessionFiles;

void openSession(const QByteArray& encodedPath)
{
    const QByteArray path = QByteArray::fromPercentEncoding(encodedPath);
    sessionFiles.try_emplace(encodedPath, ::fopen(path.constData(), "r+"));
}

void obey(const QList<QByteArray>& words)
{
    const QByteArray path = words.value(1);
    if (words[0] == "bounce") {
        new Bounce(path, words[2].toUInt(), words[3].toUInt(), words[4].toInt());
        return;
    }
    sessionFiles.erase(path);
    if (words[0] == "open")
        openSession(path);
    else if (words[0] == "quit")
        QApplication::quit();
    std::cout << words.join(' ').constData() << std::endl;
}

} // namespace

int main(int count, char** arguments)
{
    std::ios::sync_with_stdio(false);
    QApplication application(count, arguments);
    openSession(arguments[2]);
    Arrangement window;
    window.resize(900, 460);
    window.setWindowTitle(QFile::decodeName(arguments[1]));
    window.show();

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        std::string line;
        do {
            if (!std::getline(std::cin, line))
                return QApplication::quit();
            obey(QByteArray::fromStdString(line).split(' '));
        } while (std::cin.rdbuf()->in_avail() > 0);
    });
    return QApplication::exec();
}
