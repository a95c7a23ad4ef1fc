// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <memory>

struct AVCodec;
struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVInputFormat;
struct AVPacket;
struct SwrContext;

/// What every user of FFmpeg shares: owners of its objects, its one-time set-up and its error texts. The only other
/// files that include FFmpeg's headers are the sources of this folder. Thread: any.

struct FormatContextDeleter
{
    void operator()(AVFormatContext* context) const;
};

struct CodecContextDeleter
{
    void operator()(AVCodecContext* context) const;
};

struct FrameDeleter
{
    void operator()(AVFrame* frame) const;
};

struct PacketDeleter
{
    void operator()(AVPacket* packet) const;
};

struct ResamplerDeleter
{
    void operator()(SwrContext* resampler) const;
};

using FormatContextPointer = std::unique_ptr<AVFormatContext, FormatContextDeleter>;
using CodecContextPointer = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using FramePointer = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPointer = std::unique_ptr<AVPacket, PacketDeleter>;
using ResamplerPointer = std::unique_ptr<SwrContext, ResamplerDeleter>;

/// Silences FFmpeg's log and builds the table of forced input formats; does its work once per process.
void initialiseFfmpeg();

/// The format that files of this suffix are read with, whatever they hold; null lets FFmpeg detect the format.
/// The case of the suffix does not matter. Call `initialiseFfmpeg()` before.
const AVInputFormat* inputFormatForSuffix(const QString& suffix);

/// The decoder for one of FFmpeg's codec numbers, or null. FFmpeg itself goes through its whole list at each question.
const AVCodec* decoderForCodec(int codec);

/// FFmpeg's own text for one of its error codes.
QString ffmpegErrorText(int errorCode);
