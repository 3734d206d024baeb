#pragma once

#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A picture in a file; the drawing of the screens decodes the file.
__attribute__((visibility("default")))
@interface KivoImage : KivoObject

/// The image of that name in the host's asset catalogue; nil when the catalogue has no such name.
+ (nullable instancetype)imageNamed:(NSString*)name;
/// The file is not read before the image is drawn.
+ (instancetype)imageWithContentsOfFile:(NSString*)path;

@property (nonatomic, readonly) NSString* path;

@end

NS_ASSUME_NONNULL_END
