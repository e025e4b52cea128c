// Precompiled for every target that uses Qt without windows.
#pragma once
#include <QByteArray>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>
